#include "app/gtk/page/OptionList.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "app/gtk/Style.h"

namespace {

enum Column { kText, kIsEnabled, kWeight, kColumnCount };

constexpr guint kMaxOptions = 10'000;
constexpr glong kMaxCharacters = 200;
constexpr int kMinHeight = 120;               // if there is less room beside the field, the list covers it
constexpr int kPadding = 32;                  // of the text, and the scroll bar
constexpr std::uint32_t kTypingPause = 1000;  // milliseconds; letters after it begin a new word
constexpr char kStyle[] = ".options { border: 1px solid @borders; background-color: @theme_base_color; }";

std::string labelOf(WebKitOptionMenuItem* item) {
  const std::string text = validUtf8(orEmpty(webkit_option_menu_item_get_label(item)));
  const glong length = std::min(g_utf8_strlen(text.c_str(), -1), kMaxCharacters);
  const char* const end = g_utf8_offset_to_pointer(text.c_str(), length);
  std::string label(text.c_str(), end);
  std::replace(label.begin(), label.end(), '\n', ' ');
  return label;
}

bool isChoosable(WebKitOptionMenuItem* item) {
  return webkit_option_menu_item_is_enabled(item) && !webkit_option_menu_item_is_group_label(item);
}

std::string caseFolded(const std::string& text) {
  return Owned<char, g_free>(g_utf8_casefold(text.c_str(), -1)).get();
}

guint countOf(WebKitOptionMenu* menu) {
  return std::min(webkit_option_menu_get_n_items(menu), kMaxOptions);
}

Owned<GtkListStore> newModel(WebKitOptionMenu* menu) {
  Owned<GtkListStore> model(gtk_list_store_new(kColumnCount, G_TYPE_STRING, G_TYPE_BOOLEAN, G_TYPE_INT));
  for (guint i = 0; i < countOf(menu); ++i) {
    WebKitOptionMenuItem* const item = webkit_option_menu_get_item(menu, i);
    const std::string text = (webkit_option_menu_item_is_group_child(item) ? "    " : "") + labelOf(item);
    const int weight = webkit_option_menu_item_is_group_label(item) ? PANGO_WEIGHT_BOLD : PANGO_WEIGHT_NORMAL;
    gtk_list_store_insert_with_values(model.get(), nullptr, -1, kText, text.c_str(), kIsEnabled,
                                      isChoosable(item) ? TRUE : FALSE, kWeight, weight, -1);
  }
  return model;
}

// In pixels; the option with the most bytes stands for the widest.
int widthOfLongest(WebKitOptionMenu* menu, GtkWidget* list) {
  std::string longest;
  for (guint i = 0; i < countOf(menu); ++i) {
    const std::string label = labelOf(webkit_option_menu_get_item(menu, i));
    if (label.size() > longest.size()) longest = label;
  }
  const Owned<PangoLayout> layout(gtk_widget_create_pango_layout(list, longest.c_str()));
  int width = 0;
  pango_layout_get_pixel_size(layout.get(), &width, nullptr);
  return width + kPadding;
}

gboolean mayBeSelected(GtkTreeSelection*, GtkTreeModel* model, GtkTreePath* path, gboolean, gpointer) {
  GtkTreeIter row;
  gboolean enabled = FALSE;
  if (gtk_tree_model_get_iter(model, &row, path)) gtk_tree_model_get(model, &row, kIsEnabled, &enabled, -1);
  return enabled;
}

GtkTreeView* newList(WebKitOptionMenu* menu) {
  GtkTreeView* const list = GTK_TREE_VIEW(gtk_tree_view_new_with_model(GTK_TREE_MODEL(newModel(menu).get())));
  GtkCellRenderer* const cell = gtk_cell_renderer_text_new();
  g_object_set(cell, "ellipsize", PANGO_ELLIPSIZE_END, "single-paragraph-mode", TRUE, nullptr);
  GtkTreeViewColumn* const column = gtk_tree_view_column_new_with_attributes(nullptr, cell, "text", kText, "sensitive",
                                                                             kIsEnabled, "weight", kWeight, nullptr);

  // All rows have the same height, so that thousands of them are not measured.
  gtk_tree_view_column_set_sizing(column, GTK_TREE_VIEW_COLUMN_FIXED);
  gtk_tree_view_append_column(list, column);
  gtk_tree_view_set_fixed_height_mode(list, TRUE);

  gtk_tree_view_set_headers_visible(list, FALSE);
  gtk_tree_view_set_enable_search(list, FALSE);  // its entry is a window of its own
  gtk_tree_view_set_hover_selection(list, TRUE);
  gtk_tree_view_set_activate_on_single_click(list, TRUE);
  gtk_tree_selection_set_select_function(gtk_tree_view_get_selection(list), mayBeSelected, nullptr, nullptr);
  return list;
}

void putCursorOn(GtkTreeView* list, guint index) {
  const Owned<GtkTreePath, gtk_tree_path_free> path(gtk_tree_path_new_from_indices(static_cast<int>(index), -1));
  gtk_tree_view_set_cursor(list, path.get(), nullptr, FALSE);
  gtk_tree_view_scroll_to_cell(list, path.get(), nullptr, FALSE, 0, 0);
}

}  // namespace

OptionList::OptionList(GtkOverlay* area, GtkWidget* view) : area_(area), view_(view) {
  addStyle(kStyle);
  g_signal_connect(area_, "get-child-position", G_CALLBACK(onPosition), this);
  for (const char* const input : {"button-press-event", "touch-event", "scroll-event"})
    g_signal_connect(view_, input, G_CALLBACK(onPageInput), this);
}

void OptionList::show(WebKitOptionMenu* menu, const GdkRectangle& field) {
  close();
  menu_.reset(WEBKIT_OPTION_MENU(g_object_ref(menu)));
  g_signal_connect(menu, "close", G_CALLBACK(onClosed), this);
  field_ = field;
  typed_.clear();
  build();
}

void OptionList::build() {
  list_ = newList(menu_.get());
  width_ = widthOfLongest(menu_.get(), GTK_WIDGET(list_));
  g_signal_connect(list_, "key-press-event", G_CALLBACK(onKeyPress), this);
  g_signal_connect(list_, "focus-out-event", G_CALLBACK(onFocusOut), this);
  g_signal_connect(list_, "row-activated", G_CALLBACK(onActivated), this);

  frame_ = gtk_scrolled_window_new(nullptr, nullptr);
  gtk_scrolled_window_set_policy(GTK_SCROLLED_WINDOW(frame_), GTK_POLICY_NEVER, GTK_POLICY_AUTOMATIC);
  gtk_scrolled_window_set_propagate_natural_height(GTK_SCROLLED_WINDOW(frame_), TRUE);
  setStyleClass(frame_, "options");
  gtk_container_add(GTK_CONTAINER(frame_), GTK_WIDGET(list_));
  gtk_overlay_add_overlay(area_, frame_);
  gtk_widget_show_all(frame_);

  gtk_widget_grab_focus(GTK_WIDGET(list_));
  for (guint i = 0; i < countOf(menu_.get()); ++i) {
    if (webkit_option_menu_item_is_selected(webkit_option_menu_get_item(menu_.get(), i))) putCursorOn(list_, i);
  }
}

void OptionList::close() {
  if (const Owned<WebKitOptionMenu> menu = remove()) webkit_option_menu_close(menu.get());
}

// Removes the list from the window. Returns its menu, which must be told the outcome.
Owned<WebKitOptionMenu> OptionList::remove() {
  Owned<WebKitOptionMenu> menu = std::move(menu_);
  if (!menu) return menu;
  g_signal_handlers_disconnect_by_data(menu.get(), this);
  g_signal_handlers_disconnect_by_data(list_, this);
  list_ = nullptr;
  gtk_widget_destroy(std::exchange(frame_, nullptr));
  gtk_widget_grab_focus(view_);
  return menu;
}

// WebKit closes the list itself: the page or its field is gone.
void OptionList::onClosed(WebKitOptionMenu*, OptionList* self) {
  (void)self->remove();
}

void OptionList::onActivated(GtkTreeView*, GtkTreePath* path, GtkTreeViewColumn*, OptionList* self) {
  const auto index = static_cast<guint>(gtk_tree_path_get_indices(path)[0]);
  if (!isChoosable(webkit_option_menu_get_item(self->menu_.get(), index))) return;
  webkit_option_menu_activate_item(self->remove().get(), index);
}

// The press that closes the list does not reach the page, where it could open the list again.
gboolean OptionList::onPageInput(GtkWidget*, GdkEvent*, OptionList* self) {
  if (!self->menu_) return FALSE;
  self->close();
  return TRUE;
}

gboolean OptionList::onFocusOut(GtkWidget*, GdkEvent*, OptionList* self) {
  self->close();
  return FALSE;
}

gboolean OptionList::onKeyPress(GtkWidget*, GdkEventKey* event, OptionList* self) {
  if (event->keyval == GDK_KEY_Escape || event->keyval == GDK_KEY_Tab || event->keyval == GDK_KEY_ISO_Left_Tab) {
    self->close();
    return TRUE;
  }
  const gunichar letter = gdk_keyval_to_unicode(event->keyval);
  const bool isShortcut = (event->state & (GDK_CONTROL_MASK | GDK_MOD1_MASK)) != 0;
  if (isShortcut || !g_unichar_isgraph(letter)) return FALSE;
  self->selectNext(letter, event->time);
  return TRUE;
}

void OptionList::selectNext(gunichar letter, std::uint32_t time) {
  if (time - std::exchange(lastLetterTime_, time) > kTypingPause) typed_.clear();
  char utf8[6];
  typed_ += caseFolded({utf8, static_cast<std::size_t>(g_unichar_to_utf8(letter, utf8))});

  for (guint i = 0; i < countOf(menu_.get()); ++i) {
    WebKitOptionMenuItem* const item = webkit_option_menu_get_item(menu_.get(), i);
    if (isChoosable(item) && caseFolded(labelOf(item)).rfind(typed_, 0) == 0) return putCursorOn(list_, i);
  }
}

gboolean OptionList::onPosition(GtkOverlay* area, GtkWidget* child, GdkRectangle* position, OptionList* self) {
  if (child != self->frame_) return FALSE;
  const int areaWidth = gtk_widget_get_allocated_width(GTK_WIDGET(area));
  const int areaHeight = gtk_widget_get_allocated_height(GTK_WIDGET(area));
  position->width = std::min(std::max(self->field_.width, self->width_), areaWidth);
  position->x = std::clamp(self->field_.x, 0, areaWidth - position->width);

  int height = 0;
  gtk_widget_get_preferred_height_for_width(child, position->width, nullptr, &height);
  const int top = std::clamp(self->field_.y, 0, areaHeight);
  const int bottom = std::clamp(self->field_.y + self->field_.height, 0, areaHeight);
  const bool fitsBelow = height <= areaHeight - bottom || areaHeight - bottom >= top;
  const int room = fitsBelow ? areaHeight - bottom : top;
  if (room < std::min(height, kMinHeight)) {
    position->height = std::min(height, areaHeight);
    position->y = areaHeight - position->height;
  } else {
    position->height = std::min(height, room);
    position->y = fitsBelow ? bottom : top - position->height;
  }
  return TRUE;
}
