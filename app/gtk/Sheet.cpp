#include "app/gtk/Sheet.h"

#include <algorithm>
#include <utility>

#include "app/gtk/GtkHandles.h"
#include "app/gtk/Style.h"

namespace {

constexpr int kOverlap = 4;  // how far the sheet reaches into the strip, out of the page's area
constexpr int kMargin = 12;  // that the sheet leaves at the window's other edges, at least
constexpr int kLeastWidthInCharacters = 12;
constexpr int kWidthInCharacters = 48;
constexpr int kMostLines = 12;
constexpr glong kMostCharacters = 600;

constexpr char kStyle[] = R"(
.sheet { padding: 18px; border: 1px solid @borders; border-radius: 0 0 8px 8px;
         color: @theme_fg_color; background-color: @theme_bg_color; box-shadow: 0 2px 10px rgba(0, 0, 0, 0.4); }
.sheet .heading { font-weight: bold; }
.sheet .warning { padding: 6px; color: @theme_bg_color; background-color: @theme_fg_color; }
)";

GtkWidget* newFrame(const std::string& name) {
  GtkWidget* const frame = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  setStyleClass(frame, "sheet");

  AtkObject* const accessible = gtk_widget_get_accessible(frame);
  atk_object_set_role(accessible, ATK_ROLE_ALERT);
  atk_object_set_name(accessible, name.c_str());
  return frame;
}

// A sheet keeps within the window, however much a page has to say.
std::string shortened(const std::string& text) {
  std::string valid = validUtf8(text);
  if (g_utf8_strlen(valid.c_str(), -1) <= kMostCharacters) return valid;
  const char* const end = g_utf8_offset_to_pointer(valid.c_str(), kMostCharacters);
  return std::string(valid.c_str(), end) + "\u2026";
}

GtkWidget* newText(const std::string& text, const char* styleClass) {
  GtkWidget* const label = gtk_label_new(shortened(text).c_str());
  gtk_label_set_line_wrap(GTK_LABEL(label), TRUE);
  gtk_label_set_line_wrap_mode(GTK_LABEL(label), PANGO_WRAP_WORD_CHAR);
  gtk_label_set_lines(GTK_LABEL(label), kMostLines);
  gtk_label_set_ellipsize(GTK_LABEL(label), PANGO_ELLIPSIZE_END);
  gtk_label_set_width_chars(GTK_LABEL(label), kLeastWidthInCharacters);
  gtk_label_set_max_width_chars(GTK_LABEL(label), kWidthInCharacters);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  setStyleClass(label, styleClass);
  return label;
}

GtkEntry* newEntry(const Question::Field& field) {
  GtkEntry* const entry = GTK_ENTRY(gtk_entry_new());
  gtk_entry_set_text(entry, validUtf8(field.value).c_str());
  gtk_entry_set_activates_default(entry, TRUE);
  gtk_entry_set_visibility(entry, !field.secret);
  if (field.secret) gtk_entry_set_input_purpose(entry, GTK_INPUT_PURPOSE_PASSWORD);
  return entry;
}

}  // namespace

Sheet::Sheet(GtkOverlay* over, GtkWidget* page) : over_(over), page_(page) {
  useStyle(kStyle);
  g_signal_connect(over, "get-child-position", G_CALLBACK(onPlace), this);
}

void Sheet::close() {
  (void)clear();
}

void Sheet::declineAll() {
  if (questions_.empty()) return;
  const std::deque<Waiting> declined = clear();
  givePageBack();
  for (const Waiting& each : declined)
    each.onReply({});
}

std::deque<Sheet::Waiting> Sheet::clear() {
  entries_.clear();
  if (frame_ != nullptr) gtk_widget_destroy(std::exchange(frame_, nullptr));
  return std::exchange(questions_, {});
}

Sheet::Number Sheet::ask(Question question, std::function<void(const Reply&)> onReply) {
  questions_.push_back({++last_, std::move(question), std::move(onReply)});
  if (questions_.size() == 1) hang(questions_.front().question);
  return last_;
}

bool Sheet::withdraw(Number number) {
  const auto found = std::find_if(questions_.begin(), questions_.end(),
                                  [number](const Waiting& each) { return each.number == number; });
  if (found == questions_.end()) return false;
  if (found == questions_.begin()) {
    takeDown();
  } else {
    questions_.erase(found);
  }
  return true;
}

void Sheet::hang(const Question& question) {
  frame_ = newFrame(question.heading);
  g_signal_connect(frame_, "key-press-event", G_CALLBACK(onKeyPress), this);

  addText(question.heading, "heading");
  GtkWidget* const words = addWords(question.words);
  addText(question.warning, "warning");
  for (const Question::Field& field : question.fields)
    addField(field, field.label.empty() ? words : addText(field.label, "label"));
  GtkWidget* const accept = addButtons(question.canBeDeclined);

  gtk_widget_set_sensitive(page_, FALSE);
  gtk_overlay_add_overlay(over_, frame_);
  gtk_widget_show_all(frame_);
  gtk_widget_grab_default(accept);
  gtk_widget_grab_focus(entries_.empty() ? accept : GTK_WIDGET(entries_.front()));
}

void Sheet::add(GtkWidget* part) {
  gtk_box_pack_start(GTK_BOX(frame_), part, FALSE, FALSE, 0);
}

GtkWidget* Sheet::addText(const std::string& text, const char* styleClass) {
  GtkWidget* const label = newText(text, styleClass);
  gtk_widget_set_no_show_all(label, text.empty());
  add(label);
  return label;
}

// What a page says gives way where a person's font leaves no room for all of it: who asks, and the buttons, must be
// seen.
GtkWidget* Sheet::addWords(const std::string& words) {
  GtkWidget* const label = newText(words, "words");
  GtkWidget* const scroller = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(scroller), GTK_POLICY_NEVER, GTK_POLICY_EXTERNAL);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_scrolled_window_set_propagate_natural_width(GTK_SCROLLED_WINDOW(scroller), TRUE);
  gtk_container_add(GTK_CONTAINER(scroller), label);
  gtk_widget_set_no_show_all(scroller, words.empty());
  add(scroller);
  return label;
}

void Sheet::addField(const Question::Field& field, GtkWidget* label) {
  GtkEntry* const entry = newEntry(field);
  gtk_label_set_mnemonic_widget(GTK_LABEL(label), GTK_WIDGET(entry));
  atk_object_set_name(gtk_widget_get_accessible(GTK_WIDGET(entry)), gtk_label_get_text(GTK_LABEL(label)));
  add(GTK_WIDGET(entry));
  entries_.push_back(entry);
}

GtkWidget* Sheet::addButtons(bool canBeDeclined) {
  GtkWidget* const buttons = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
  gtk_button_box_set_layout(GTK_BUTTON_BOX(buttons), GTK_BUTTONBOX_END);
  gtk_box_set_spacing(GTK_BOX(buttons), 8);
  add(buttons);
  if (canBeDeclined) {
    GtkWidget* const decline = gtk_button_new_with_label("Cancel");
    g_signal_connect_swapped(decline, "clicked", G_CALLBACK(+[](Sheet* self) { self->answer(false); }), this);
    gtk_container_add(GTK_CONTAINER(buttons), decline);
  }
  GtkWidget* const accept = gtk_button_new_with_label("OK");
  gtk_widget_set_can_default(accept, TRUE);
  g_signal_connect_swapped(accept, "clicked", G_CALLBACK(+[](Sheet* self) { self->answer(true); }), this);
  gtk_container_add(GTK_CONTAINER(buttons), accept);
  return accept;
}

// The next question hangs before the former's answer is told: whoever is told may ask again.
void Sheet::takeDown() {
  questions_.pop_front();
  entries_.clear();
  gtk_widget_destroy(std::exchange(frame_, nullptr));
  if (!questions_.empty()) return hang(questions_.front().question);
  givePageBack();
}

void Sheet::givePageBack() {
  gtk_widget_set_sensitive(page_, TRUE);
  gtk_widget_grab_focus(page_);
}

void Sheet::answer(bool accepted) {
  Reply reply;
  reply.accepted = accepted;
  if (accepted) {
    for (GtkEntry* const entry : entries_)
      reply.values.emplace_back(gtk_entry_get_text(entry));
  }
  const std::function<void(const Reply&)> onReply = std::move(questions_.front().onReply);
  takeDown();
  onReply(reply);
}

// In the middle below the strip, whose height a person's font decides; never beyond the window.
gboolean Sheet::onPlace(GtkOverlay* over, GtkWidget* child, GdkRectangle* place, Sheet* self) {
  if (child != self->frame_) return FALSE;
  GtkAllocation window;
  GtkAllocation page;
  gtk_widget_get_allocation(GTK_WIDGET(over), &window);
  gtk_widget_get_allocation(self->page_, &page);

  GtkRequisition natural;
  gtk_widget_get_preferred_size(child, nullptr, &natural);
  place->width = std::min(natural.width, window.width - 2 * kMargin);
  int height = 0;
  gtk_widget_get_preferred_height_for_width(child, place->width, nullptr, &height);
  place->y = page.y - kOverlap;
  place->height = std::min(height, window.height - place->y - kMargin);
  place->x = (window.width - place->width) / 2;
  return TRUE;
}

gboolean Sheet::onKeyPress(GtkWidget*, GdkEventKey* event, Sheet* self) {
  if (event->keyval != GDK_KEY_Escape) return FALSE;
  self->answer(false);
  return TRUE;
}
