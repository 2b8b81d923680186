#include "app/gtk/Sheet.h"

#include <utility>

#include "app/gtk/GtkHandles.h"

namespace {

constexpr int kOverlap = 6;  // how far the sheet reaches into the strip, out of the page's area
constexpr int kStripHeight = 20;
constexpr int kWidthInCharacters = 48;
constexpr int kMostLines = 12;
constexpr glong kMostCharacters = 600;

constexpr char kStyle[] = R"(
.sheet { padding: 18px; border: 1px solid @borders; border-radius: 0 0 8px 8px;
         color: @theme_fg_color; background-color: @theme_bg_color; box-shadow: 0 2px 10px rgba(0, 0, 0, 0.4); }
.sheet .heading { font-weight: bold; }
.sheet .warning { padding: 6px; color: @theme_bg_color; background-color: @theme_fg_color; }
)";

void useStyle(GtkWidget* frame) {
  static const ObjectRef<GtkCssProvider> provider = [] {
    ObjectRef<GtkCssProvider> made(gtk_css_provider_new());
    gtk_css_provider_load_from_data(made.get(), kStyle, -1, nullptr);
    return made;
  }();
  gtk_style_context_add_provider_for_screen(gtk_widget_get_screen(frame), GTK_STYLE_PROVIDER(provider.get()),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

// A sheet keeps within the window, however much a page has to say.
std::string shortened(const std::string& text) {
  const std::string valid = validUtf8(text);
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
  gtk_label_set_width_chars(GTK_LABEL(label), kWidthInCharacters);
  gtk_label_set_max_width_chars(GTK_LABEL(label), kWidthInCharacters);
  gtk_label_set_xalign(GTK_LABEL(label), 0);
  gtk_style_context_add_class(gtk_widget_get_style_context(label), styleClass);
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

void Sheet::close() {
  const std::deque<Waiting> dropped = std::exchange(questions_, {});
  entries_.clear();
  if (frame_ != nullptr) gtk_widget_destroy(std::exchange(frame_, nullptr));
}

Sheet::Number Sheet::ask(Question question, std::function<void(const Reply&)> onReply) {
  questions_.push_back({++last_, std::move(question), std::move(onReply)});
  if (questions_.size() == 1) hang(questions_.front().question);
  return last_;
}

void Sheet::withdraw(Number number) {
  if (!questions_.empty() && questions_.front().number == number) return takeDown();
  for (auto each = questions_.begin(); each != questions_.end(); ++each) {
    if (each->number != number) continue;
    questions_.erase(each);
    return;
  }
}

void Sheet::hang(const Question& question) {
  frame_ = gtk_box_new(GTK_ORIENTATION_VERTICAL, 12);
  useStyle(frame_);
  gtk_style_context_add_class(gtk_widget_get_style_context(frame_), "sheet");
  gtk_widget_set_halign(frame_, GTK_ALIGN_CENTER);
  gtk_widget_set_valign(frame_, GTK_ALIGN_START);
  gtk_widget_set_margin_top(frame_, kStripHeight - kOverlap);
  g_signal_connect(frame_, "key-press-event", G_CALLBACK(onKeyPress), this);

  AtkObject* const accessible = gtk_widget_get_accessible(frame_);
  atk_object_set_role(accessible, ATK_ROLE_ALERT);
  atk_object_set_name(accessible, question.heading.c_str());

  const auto add = [this](GtkWidget* part) { gtk_box_pack_start(GTK_BOX(frame_), part, FALSE, FALSE, 0); };
  add(newText(question.heading, "heading"));
  if (!question.words.empty()) add(newText(question.words, "words"));
  if (!question.warning.empty()) add(newText(question.warning, "warning"));
  for (const Question::Field& field : question.fields) {
    GtkEntry* const entry = newEntry(field);
    if (!field.label.empty()) {
      GtkWidget* const label = newText(field.label, "label");
      gtk_label_set_mnemonic_widget(GTK_LABEL(label), GTK_WIDGET(entry));
      add(label);
    }
    add(GTK_WIDGET(entry));
    entries_.push_back(entry);
  }
  GtkWidget* const buttons = newButtons(question);
  add(buttons);

  gtk_widget_set_sensitive(page_, FALSE);
  gtk_overlay_add_overlay(over_, frame_);
  gtk_widget_show_all(frame_);
  GList* const made = gtk_container_get_children(GTK_CONTAINER(buttons));
  GtkWidget* const accept = GTK_WIDGET(g_list_last(made)->data);
  g_list_free(made);
  gtk_widget_grab_default(accept);
  gtk_widget_grab_focus(entries_.empty() ? accept : GTK_WIDGET(entries_.front()));
}

GtkWidget* Sheet::newButtons(const Question& question) {
  GtkWidget* const buttons = gtk_button_box_new(GTK_ORIENTATION_HORIZONTAL);
  gtk_button_box_set_layout(GTK_BUTTON_BOX(buttons), GTK_BUTTONBOX_END);
  gtk_box_set_spacing(GTK_BOX(buttons), 8);
  if (question.canBeDeclined) {
    GtkWidget* const decline = gtk_button_new_with_label("Cancel");
    g_signal_connect_swapped(decline, "clicked", G_CALLBACK(+[](Sheet* self) { self->answer(false); }), this);
    gtk_container_add(GTK_CONTAINER(buttons), decline);
  }
  GtkWidget* const accept = gtk_button_new_with_label("OK");
  gtk_widget_set_can_default(accept, TRUE);
  g_signal_connect_swapped(accept, "clicked", G_CALLBACK(+[](Sheet* self) { self->answer(true); }), this);
  gtk_container_add(GTK_CONTAINER(buttons), accept);
  return buttons;
}

// The next question hangs before the former's answer is told: whoever is told may ask again.
void Sheet::takeDown() {
  questions_.pop_front();
  entries_.clear();
  gtk_widget_destroy(std::exchange(frame_, nullptr));
  if (!questions_.empty()) return hang(questions_.front().question);
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

gboolean Sheet::onKeyPress(GtkWidget*, GdkEventKey* event, Sheet* self) {
  if (event->keyval != GDK_KEY_Escape) return FALSE;
  self->answer(false);
  return TRUE;
}
