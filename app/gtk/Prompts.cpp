#include "app/gtk/Prompts.h"

#include <cstring>  // explicit_bzero

#include <algorithm>
#include <utility>

#include "app/gtk/Glib.h"
#include "app/gtk/Language.h"
#include "app/gtk/Style.h"
#include "app/gtk/page/Guards.h"

namespace {

constexpr int kOverlap = 4;   // with the strip
constexpr int kMargin = 12;   // min. distance from the window's other edges
constexpr int kPadding = 20;  // with the border
constexpr int kMinWidthInCharacters = 12;
constexpr int kMaxWidthInCharacters = 48;
constexpr int kMaxLines = 12;
constexpr glong kMaxCharacters = 600;
constexpr guint kInputDelayMilliseconds = 700;

constexpr char kChoice[] = "svo-choice";

constexpr char kStyle[] = R"(
.prompt { padding: 18px; border: 1px solid @borders; border-radius: 0 0 8px 8px;
         color: @theme_fg_color; background-color: @theme_bg_color; box-shadow: 0 2px 10px rgba(0, 0, 0, 0.4); }
.prompt .heading { font-weight: bold; }
.prompt .warning { padding: 6px; color: @theme_bg_color; background-color: @theme_fg_color; }
)";

GtkWidget* newFrame(const std::string& name) {
  GtkWidget* const frame = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  setStyleClass(frame, "prompt");

  AtkObject* const accessible = gtk_widget_get_accessible(frame);
  atk_object_set_role(accessible, ATK_ROLE_ALERT);
  atk_object_set_name(accessible, name.c_str());
  return frame;
}

std::string shortened(const std::string& text) {
  std::string valid = validUtf8(text);
  if (g_utf8_strlen(valid.c_str(), -1) <= kMaxCharacters) return valid;
  const char* const end = g_utf8_offset_to_pointer(valid.c_str(), kMaxCharacters);
  return std::string(valid.c_str(), end) + "\u2026";
}

// A hyphen that Pango inserts where it breaks a long host would seem to be part of the host.
void refuseHyphens(GtkLabel* label) {
  const Owned<PangoAttrList, pango_attr_list_unref> attributes(pango_attr_list_new());
  pango_attr_list_insert(attributes.get(), pango_attr_insert_hyphens_new(FALSE));
  gtk_label_set_attributes(label, attributes.get());
}

// A scroller takes the height that its text has at its preferred width: in a large font that must not be wider than
// `window`, which would wrap the text again.
int maxWidthInCharacters(GtkWidget* window) {
  PangoContext* const context = gtk_widget_get_pango_context(window);
  const Owned<PangoFontMetrics, pango_font_metrics_unref> metrics(pango_context_get_metrics(context, nullptr, nullptr));
  const int character = std::max({pango_font_metrics_get_approximate_char_width(metrics.get()),
                                  pango_font_metrics_get_approximate_digit_width(metrics.get()), 1});
  const int width = gtk_widget_get_allocated_width(window) - 2 * (kMargin + kPadding);
  return std::clamp(width * PANGO_SCALE / character, kMinWidthInCharacters, kMaxWidthInCharacters);
}

GtkWidget* newText(const std::string& text, const char* styleClass, GtkWidget* window) {
  GtkWidget* const label = gtk_label_new(shortened(text).c_str());
  gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_line_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  refuseHyphens(GTK_LABEL(label));
  gtk_label_set_lines(GTK_LABEL(label), kMaxLines);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_label_set_width_chars(GTK_LABEL(label), kMinWidthInCharacters);
  gtk_label_set_max_width_chars(GTK_LABEL(label), maxWidthInCharacters(window));
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  setStyleClass(label, styleClass);
  return label;
}

// Shrinks below the height of `child` if the window is too small for it.
GtkWidget* newScroller(GtkWidget* child, GtkPolicyType scrollbar) {
  GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, scrollbar);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_container_add(GTK_CONTAINER(scroller), child);
  return scroller;
}

GtkEntry* newEntry(const Prompt::Field& field) {
  GtkEntry* const entry = GTK_ENTRY(gtk_entry_new());
  gtk_entry_set_text(entry, validUtf8(field.value).c_str());
  gtk_entry_set_activates_default(entry, TRUE);
  gtk_entry_set_visibility(entry, !field.secret);
  g_object_set(entry, "truncate-multiline", TRUE, nullptr);  // a pasted line break cannot be seen
  if (field.secret) gtk_entry_set_input_purpose(entry, GTK_INPUT_PURPOSE_PASSWORD);
  refuseDrags(GTK_WIDGET(entry));  // a page may have written the text
  return entry;
}

}  // namespace

Prompts::Prompts(GtkOverlay* overlay, GtkWidget* page)
    : overlay_(overlay), page_(page), clicks_(gtk_gesture_multi_press_new(GTK_WIDGET(overlay))) {
  addStyle(kStyle);
  g_signal_connect(overlay, "get-child-position", G_CALLBACK(onPosition), this);

  // Insensitive widgets get no clicks, but their parents see them first.
  gtk_event_controller_set_propagation_phase(GTK_EVENT_CONTROLLER(clicks_.get()), GTK_PHASE_CAPTURE);
  gtk_gesture_single_set_button(GTK_GESTURE_SINGLE(clicks_.get()), 0);  // every button
  g_signal_connect(clicks_.get(), "pressed", G_CALLBACK(onClick), this);
}

Prompts::~Prompts() {
  cancelDelay();
}

// The last reference to a request may be in an entry. Its end cancels the request, and that calls cancel(): entries are
// destroyed outside the queue.
void Prompts::close() {
  const std::deque<Entry> closed = std::exchange(queue_, {});
  removeFrame();
}

void Prompts::declineAll() {
  if (queue_.empty()) return;
  const std::deque<Entry> declined = std::exchange(queue_, {});
  withdraw();
  for (const Entry& each : declined)
    each.onReply({});
}

Prompts::Id Prompts::show(Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  queue_.push_back({++lastId_, std::move(prompt), std::move(onReply)});
  if (queue_.size() == 1) build(queue_.front().prompt);
  return lastId_;
}

Prompts::Id Prompts::showFirst(Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  queue_.push_front({++lastId_, std::move(prompt), std::move(onReply)});
  build(queue_.front().prompt);
  return lastId_;
}

bool Prompts::replace(Id id, Prompt prompt, std::function<void(const PromptReply&)> onReply) {
  const auto found = find(id);
  if (found == queue_.end()) return false;
  const Entry replaced = std::exchange(*found, {id, std::move(prompt), std::move(onReply)});
  if (found == queue_.begin()) build(found->prompt);
  return true;
}

bool Prompts::cancel(Id id) {
  const auto found = find(id);
  if (found == queue_.end()) return false;
  const bool isShown = found == queue_.begin();
  const Entry cancelled = std::move(*found);
  queue_.erase(found);
  if (isShown) withdraw();
  return true;
}

std::deque<Prompts::Entry>::iterator Prompts::find(Id id) {
  return std::find_if(queue_.begin(), queue_.end(), [id](const Entry& each) { return each.id == id; });
}

void Prompts::build(const Prompt& prompt) {
  removeFrame();
  frame_ = newFrame(prompt.heading);
  g_signal_connect(frame_, "key-press-event", G_CALLBACK(onKeyPress), this);
  g_signal_connect(frame_, "draw", G_CALLBACK(onDraw), this);

  addText(prompt.heading, "heading");
  GtkWidget* const message = addMessage(prompt.message);
  addText(prompt.warning, "warning");
  for (const Prompt::Field& field : prompt.fields)
    addField(field, field.label.empty() ? message : addText(field.label, "label"));
  if (!prompt.choices.empty()) addChoices(prompt.choices);
  addButtons(prompt);

  gtk_widget_set_sensitive(buttons_, canOnlyBeDeclined() ? TRUE : FALSE);
  gtk_widget_set_sensitive(page_, FALSE);
  gtk_overlay_add_overlay(overlay_, frame_);
  gtk_widget_show_all(frame_);

  // The frame has the focus until the prompt takes input, and drops every key.
  gtk_widget_set_can_focus(frame_, TRUE);
  gtk_widget_grab_focus(frame_);
}

// Of the prompt that is shown.
bool Prompts::canOnlyBeDeclined() const {
  if (queue_.empty()) return false;
  const Prompt& prompt = queue_.front().prompt;
  return !prompt.canBeAccepted && prompt.choices.empty();
}

// Key presses and clicks that have already arrived are handled first: they have the default priority.
void Prompts::delayInput() {
  cancelDelay();
  delay_ = g_timeout_add_full(G_PRIORITY_DEFAULT + 10, kInputDelayMilliseconds, onDelayOver, this, nullptr);
}

void Prompts::cancelDelay() {
  if (delay_ != 0) g_source_remove(std::exchange(delay_, 0));
}

void Prompts::takeInput() {
  takesInput_ = true;
  for (GtkEntry* const entry : entries_)
    gtk_widget_set_sensitive(GTK_WIDGET(entry), TRUE);
  if (choices_ != nullptr) gtk_widget_set_sensitive(choices_, TRUE);
  gtk_widget_set_sensitive(buttons_, TRUE);
  gtk_widget_set_can_focus(frame_, FALSE);
  gtk_widget_grab_default(accept_);
  gtk_widget_grab_focus(entries_.empty() ? accept_ : GTK_WIDGET(entries_.front()));
}

void Prompts::add(GtkWidget* part) {
  gtk_box_pack_start(GTK_BOX(frame_), part, FALSE, FALSE, 0);
}

GtkWidget* Prompts::addText(const std::string& text, const char* styleClass) {
  GtkWidget* const label = newText(text, styleClass, GTK_WIDGET(overlay_));
  gtk_widget_set_no_show_all(label, text.empty());
  add(label);
  return label;
}

// The message scrolls: the heading and the buttons must be visible.
GtkWidget* Prompts::addMessage(const std::string& message) {
  GtkWidget* const label = newText(message, "message", GTK_WIDGET(overlay_));
  GtkWidget* const scroller = newScroller(label, GTK_POLICY_EXTERNAL);
  gtk_widget_set_no_show_all(scroller, message.empty());
  add(scroller);
  return label;
}

void Prompts::addField(const Prompt::Field& field, GtkWidget* label) {
  GtkEntry* const entry = newEntry(field);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), GTK_WIDGET(entry));
  atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(entry)), gtk_label_get_text(GTK_LABEL(label)));
  gtk_widget_set_sensitive(GTK_WIDGET(entry), FALSE);
  add(GTK_WIDGET(entry));
  entries_.push_back(entry);
}

// One below the other.
void Prompts::addChoices(const std::vector<std::string>& choices) {
  choices_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 8);
  gtk_widget_set_sensitive(choices_, FALSE);
  add(newScroller(choices_, GTK_POLICY_AUTOMATIC));
  for (std::size_t i = 0; i < choices.size(); ++i) {
    GtkWidget* const button = newButton(true, i);
    gtk_container_add(GTK_CONTAINER(button), newText(choices[i], "choice", GTK_WIDGET(overlay_)));
    gtk_container_add(GTK_CONTAINER(choices_), button);
    if (i == 0) accept_ = button;
  }
}

void Prompts::addButtons(const Prompt& prompt) {
  buttons_ = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
  gtk_button_box_set_layout(GTK_BUTTON_BOX(buttons_), GTK_BUTTONBOX_END);
  gtk_box_set_spacing(GTK_BOX(buttons_), 8);
  add(buttons_);
  if (prompt.canBeDeclined) addButton(_("Cancel"), false);
  if (prompt.canBeAccepted && prompt.choices.empty()) addButton(_("OK"), true);
}

void Prompts::addButton(const char* label, bool accepts) {
  GtkWidget* const button = newButton(accepts, 0);
  gtk_button_set_label(GTK_BUTTON(button), label);
  gtk_container_add(GTK_CONTAINER(buttons_), button);
  if (accepts || accept_ == nullptr) accept_ = button;
}

GtkWidget* Prompts::newButton(bool accepts, std::size_t choice) {
  GtkWidget* const button = gtk_button_new();
  gtk_widget_set_can_default(button, TRUE);
  g_object_set_data(G_OBJECT(button), kChoice, GSIZE_TO_POINTER(choice));
  g_signal_connect(button, "clicked", accepts ? G_CALLBACK(onAccept) : G_CALLBACK(onDecline), this);
  return button;
}

// Shows the next prompt before the reply is sent: the receiver may request another one.
void Prompts::showNextOrEnablePage() {
  if (!queue_.empty()) return build(queue_.front().prompt);
  removeFrame();
  enablePage();
}

// The next prompt drops what is typed during its own delay. Nobody types into a prompt without a field that has waited
// for a pause.
void Prompts::withdraw() {
  const bool mayGetKeys = !takesInput_ || !entries_.empty();
  if (!queue_.empty() || !mayGetKeys) return showNextOrEnablePage();
  takesInput_ = false;
  for (GtkEntry* const entry : entries_)
    gtk_entry_set_text(entry, "");
  gtk_container_foreach(
      GTK_CONTAINER(frame_), [](GtkWidget* part, gpointer) { gtk_widget_set_sensitive(part, FALSE); }, nullptr);
  gtk_widget_set_can_focus(frame_, TRUE);
  gtk_widget_grab_focus(frame_);
  delayInput();
}

// GTK redraws the place of the frame, but not that of its shadow.
void Prompts::removeFrame() {
  cancelDelay();
  takesInput_ = false;
  entries_.clear();
  choices_ = accept_ = nullptr;
  if (frame_ == nullptr) return;
  gtk_widget_destroy(std::exchange(frame_, nullptr));
  gtk_widget_queue_draw(GTK_WIDGET(overlay_));
}

void Prompts::enablePage() {
  gtk_widget_set_sensitive(page_, TRUE);
  gtk_widget_grab_focus(page_);
}

void Prompts::reply(bool accepted, std::size_t choice) {
  PromptReply result;
  result.accepted = accepted;
  result.choice = choice;
  if (accepted) {
    for (GtkEntry* const entry : entries_)
      result.values.emplace_back(gtk_entry_get_text(entry));
  }
  const std::function<void(const PromptReply&)> onReply = std::move(queue_.front().onReply);
  queue_.pop_front();
  showNextOrEnablePage();
  onReply(result);
  for (std::string& value : result.values)
    explicit_bzero(value.data(), value.size());
}

// Centered below the strip, whose height depends on the user's font, and inside the window.
gboolean Prompts::onPosition(GtkOverlay* overlay, GtkWidget* child, GdkRectangle* position, Prompts* self) {
  if (child != self->frame_) return FALSE;
  GtkAllocation window;
  GtkAllocation page;
  gtk_widget_get_allocation(GTK_WIDGET(overlay), &window);
  gtk_widget_get_allocation(self->page_, &page);

  GtkRequisition natural;
  gtk_widget_get_preferred_size(child, nullptr, &natural);
  position->width = std::min(natural.width, window.width - 2 * kMargin);
  int height = 0;
  gtk_widget_get_preferred_height_for_width(child, position->width, nullptr, &height);
  position->y = page.y - kOverlap;
  position->height = std::min(height, window.height - position->y - kMargin);
  position->x = (window.width - position->width) / 2;
  return TRUE;
}

// The delay starts when the prompt can be seen.
gboolean Prompts::onDraw(GtkWidget*, cairo_t*, Prompts* self) {
  if (!self->takesInput_ && self->delay_ == 0) self->delayInput();
  return FALSE;
}

void Prompts::onAccept(GtkWidget* button, Prompts* self) {
  self->reply(true, GPOINTER_TO_SIZE(g_object_get_data(G_OBJECT(button), kChoice)));
}

void Prompts::onDecline(GtkWidget*, Prompts* self) {
  self->reply(false, 0);
}

gboolean Prompts::onKeyPress(GtkWidget*, GdkEventKey* event, Prompts* self) {
  if (!self->takesInput_) {
    if (self->delay_ != 0) self->delayInput();
    if (event->keyval == GDK_KEY_Escape && self->canOnlyBeDeclined()) self->reply(false, 0);
    return TRUE;
  }
  if (event->keyval != GDK_KEY_Escape) return FALSE;
  self->reply(false, 0);
  return TRUE;
}

// A withdrawn prompt is not clicked by mistake, and a user who clicks the page again and again gets it back.
void Prompts::onClick(GtkGestureMultiPress*, int, double, double, Prompts* self) {
  if (self->delay_ != 0 && !self->queue_.empty()) self->delayInput();
}

// No prompt is left if one was withdrawn.
gboolean Prompts::onDelayOver(gpointer self) {
  auto* const prompts = static_cast<Prompts*>(self);
  prompts->delay_ = 0;
  prompts->queue_.empty() ? prompts->showNextOrEnablePage() : prompts->takeInput();
  return G_SOURCE_REMOVE;
}
