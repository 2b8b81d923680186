#include "app/gtk/PageGuards.h"

#include <algorithm>
#include <string>

namespace {

constexpr double kMostAbovePointer = 16;  // what of a pointer's image lies above the point that it shows
constexpr int kMostLinesOfBubble = 4;

gboolean onPermissionRequest(WebKitWebView*, WebKitPermissionRequest* request, gpointer) {
  webkit_permission_request_deny(request);
  return TRUE;
}

gboolean onPermissionState(WebKitWebView*, WebKitPermissionStateQuery* query, gpointer) {
  webkit_permission_state_query_finish(query, WEBKIT_PERMISSION_STATE_DENIED);
  return TRUE;
}

gboolean onFileChooser(WebKitWebView*, WebKitFileChooserRequest* request, gpointer) {
  webkit_file_chooser_request_cancel(request);
  return TRUE;
}

gboolean onColorChooser(WebKitWebView*, WebKitColorChooserRequest* request, gpointer) {
  webkit_color_chooser_request_cancel(request);
  return TRUE;
}

bool isEditing(WebKitContextMenuItem* item) {
  switch (webkit_context_menu_item_get_stock_action(item)) {
    case WEBKIT_CONTEXT_MENU_ACTION_COPY:
    case WEBKIT_CONTEXT_MENU_ACTION_CUT:
    case WEBKIT_CONTEXT_MENU_ACTION_PASTE:
    case WEBKIT_CONTEXT_MENU_ACTION_PASTE_AS_PLAIN_TEXT:
    case WEBKIT_CONTEXT_MENU_ACTION_DELETE:
    case WEBKIT_CONTEXT_MENU_ACTION_SELECT_ALL:
      return true;
    default:
      return false;
  }
}

// Without an item left there is no menu.
gboolean onContextMenu(WebKitWebView*, WebKitContextMenu* menu, GdkEvent*, WebKitHitTestResult*, gpointer) {
  for (guint i = webkit_context_menu_get_n_items(menu); i > 0; --i) {
    WebKitContextMenuItem* const item = webkit_context_menu_get_item_at_position(menu, i - 1);
    if (!isEditing(item)) webkit_context_menu_remove(menu, item);
  }
  return webkit_context_menu_get_n_items(menu) == 0;
}

gboolean onQueryTooltip(GtkWidget* view, gint, gint, gboolean, GtkTooltip*, gpointer) {
  g_signal_stop_emission_by_name(view, "query-tooltip");
  return FALSE;
}

// A list that a field above the page's area opens would come down over the strip.
gboolean onOptionMenu(WebKitWebView*, WebKitOptionMenu* menu, GdkEvent*, GdkRectangle* field, gpointer) {
  if (field->y >= 0) return FALSE;
  webkit_option_menu_close(menu);
  return TRUE;
}

// A page's own image may be 128 pixels high and hang over the strip while the pointer is in the page; a theme's
// pointers have about the default size.
bool isLarge(GdkCursor* cursor) {
  double above = 0;
  cairo_surface_t* const image = gdk_cursor_get_surface(cursor, nullptr, &above);
  if (image == nullptr) return true;
  const bool isImage = cairo_surface_get_type(image) == CAIRO_SURFACE_TYPE_IMAGE;
  const auto most = static_cast<int>(2 * gdk_display_get_default_cursor_size(gdk_cursor_get_display(cursor)));
  const bool large = !isImage || above > kMostAbovePointer || cairo_image_surface_get_height(image) > most;
  cairo_surface_destroy(image);
  return large;
}

void onCursor(GdkWindow* window, GParamSpec*, gpointer) {
  GdkCursor* const cursor = gdk_window_get_cursor(window);
  if (cursor != nullptr && gdk_cursor_get_cursor_type(cursor) == GDK_CURSOR_IS_PIXMAP && isLarge(cursor)) {
    gdk_window_set_cursor(window, nullptr);
  }
}

// WebKit bounds the text of a bubble by wrapped lines alone: a page that writes line breaks would make it as high as it
// likes.
void shorten(GtkWidget* part, gpointer) {
  if (GTK_IS_CONTAINER(part)) return gtk_container_forall(GTK_CONTAINER(part), shorten, nullptr);
  if (!GTK_IS_LABEL(part)) return;
  std::string text = gtk_label_get_text(GTK_LABEL(part));
  std::replace(text.begin(), text.end(), '\n', ' ');
  gtk_label_set_text(GTK_LABEL(part), text.c_str());
  gtk_label_set_lines(GTK_LABEL(part), kMostLinesOfBubble);
  gtk_label_set_ellipsize(GTK_LABEL(part), PANGO_ELLIPSIZE_END);
}

// Below the field or above it, whichever keeps the bubble in the page's area; false when neither does.
bool placeInPage(GtkPopover* bubble, GtkWidget* page, GdkRectangle field) {
  GtkRequisition size;
  gtk_widget_get_preferred_size(GTK_WIDGET(bubble), nullptr, &size);
  const int bottom = std::max(field.y, 0) + field.height + size.height;
  const bool fitsBelow = bottom <= gtk_widget_get_allocated_height(page);
  if (!fitsBelow && field.y < size.height) return false;

  field.y = std::max(field.y, 0);
  gtk_popover_set_position(bubble, fitsBelow ? GTK_POS_BOTTOM : GTK_POS_TOP);
  gtk_popover_set_pointing_to(bubble, &field);
  return true;
}

gboolean popDown(gpointer bubble) {
  gtk_popover_popdown(GTK_POPOVER(bubble));
  return G_SOURCE_REMOVE;
}

// A bubble that WebKit hangs on an invalid field, wherever a page has put that field, would cover the strip. One that
// has no place in the page's area is not seen.
gboolean onWidgetMapped(GSignalInvocationHint*, guint, const GValue* values, gpointer page) {
  GObject* const widget = G_OBJECT(g_value_get_object(values));
  if (!GTK_IS_POPOVER(widget) || gtk_popover_get_relative_to(GTK_POPOVER(widget)) != page) return TRUE;

  shorten(GTK_WIDGET(widget), nullptr);
  GdkRectangle field;
  (void)gtk_popover_get_pointing_to(GTK_POPOVER(widget), &field);
  if (placeInPage(GTK_POPOVER(widget), GTK_WIDGET(page), field)) return TRUE;

  gtk_widget_set_opacity(GTK_WIDGET(widget), 0);
  g_idle_add_full(G_PRIORITY_HIGH, popDown, g_object_ref(widget), g_object_unref);
  return TRUE;
}

}  // namespace

void guardPage(WebKitWebView* view) {
  g_signal_connect(view, "permission-request", G_CALLBACK(onPermissionRequest), nullptr);
  g_signal_connect(view, "query-permission-state", G_CALLBACK(onPermissionState), nullptr);
  g_signal_connect(view, "run-file-chooser", G_CALLBACK(onFileChooser), nullptr);
  g_signal_connect(view, "run-color-chooser", G_CALLBACK(onColorChooser), nullptr);
  g_signal_connect(view, "print", G_CALLBACK(gtk_true), nullptr);
  g_signal_connect(view, "enter-fullscreen", G_CALLBACK(gtk_true), nullptr);
  g_signal_connect(view, "context-menu", G_CALLBACK(onContextMenu), nullptr);

  g_signal_connect(view, "query-tooltip", G_CALLBACK(onQueryTooltip), nullptr);
  g_signal_connect(view, "show-option-menu", G_CALLBACK(onOptionMenu), nullptr);
  g_signal_connect(gtk_widget_get_window(GTK_WIDGET(view)), "notify::cursor", G_CALLBACK(onCursor), nullptr);
  g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, onWidgetMapped, view, nullptr);

  // A file or an address that is dropped on a page takes its place.
  gtk_drag_dest_unset(GTK_WIDGET(view));
}
