#include "app/gtk/page/Guards.h"

#include <algorithm>
#include <string>

#include "app/gtk/Glib.h"
#include "app/gtk/page/ClipboardGuard.h"

namespace {

constexpr double kMaxAboveHotSpot = 16;
constexpr int kMaxBubbleLines = 4;
constexpr int kOutsideTheScreen = -10000;
constexpr char kCopyingItems[] = "svo-copying-items";

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

bool copies(WebKitContextMenuItem* item) {
  const WebKitContextMenuAction action = webkit_context_menu_item_get_stock_action(item);
  return action == WEBKIT_CONTEXT_MENU_ACTION_COPY || action == WEBKIT_CONTEXT_MENU_ACTION_CUT;
}

bool isEditingItem(WebKitContextMenuItem* item) {
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

// Returning TRUE suppresses the menu.
gboolean onContextMenu(WebKitWebView* view, WebKitContextMenu* menu, GdkEvent*, WebKitHitTestResult*, gpointer) {
  guint copying = 0;  // one bit for each remaining item
  for (guint i = webkit_context_menu_get_n_items(menu); i > 0; --i) {
    WebKitContextMenuItem* const item = webkit_context_menu_get_item_at_position(menu, i - 1);
    if (isEditingItem(item)) {
      copying = copying << 1 | (copies(item) ? 1U : 0U);
    } else {
      webkit_context_menu_remove(menu, item);
    }
  }
  g_object_set_data(G_OBJECT(view), kCopyingItems, GUINT_TO_POINTER(copying));
  return webkit_context_menu_get_n_items(menu) == 0;
}

// WebKit offers no signal for the choice of an item in every version: its menu is a GTK menu with the same items.
void watchCopying(GtkMenu* menu, GObject* view) {
  const Owned<GList, g_list_free> items(gtk_container_get_children(GTK_CONTAINER(menu)));
  guint copying = GPOINTER_TO_UINT(g_object_get_data(view, kCopyingItems));
  for (const GList* item = items.get(); item != nullptr; item = item->next, copying >>= 1) {
    if ((copying & 1) != 0) g_signal_connect(item->data, "activate", G_CALLBACK(permitCopy), nullptr);
  }
}

gboolean onQueryTooltip(GtkWidget* view, gint, gint, gboolean, GtkTooltip*, gpointer) {
  g_signal_stop_emission_by_name(view, "query-tooltip");
  return FALSE;
}

gboolean cancelDrag(gpointer drag) {
  gtk_drag_cancel(GDK_DRAG_CONTEXT(drag));
  return G_SOURCE_REMOVE;
}

// A page chooses the image that follows the pointer, and what another program gets. GTK is still starting the drag: it
// can be cancelled only afterward.
void onDragBegin(GtkWidget*, GdkDragContext* drag, gpointer) {
  g_idle_add_full(G_PRIORITY_HIGH, cancelDrag, g_object_ref(drag), g_object_unref);
}

// A page's own cursor image may be 128 pixels high and cover the strip while the pointer is in the page. A theme's
// cursors have about the default size.
bool isLarge(GdkCursor* cursor) {
  double hotSpotX = 0, hotSpotY = 0;
  const Owned<cairo_surface_t, cairo_surface_destroy> image(gdk_cursor_get_surface(cursor, &hotSpotX, &hotSpotY));
  if (!image || cairo_surface_get_type(image.get()) != CAIRO_SURFACE_TYPE_IMAGE) return true;
  const auto maxHeight = static_cast<int>(2 * gdk_display_get_default_cursor_size(gdk_cursor_get_display(cursor)));
  return hotSpotY > kMaxAboveHotSpot || cairo_image_surface_get_height(image.get()) > maxHeight;
}

void onCursor(GdkWindow* window, GParamSpec*, gpointer) {
  GdkCursor* const cursor = gdk_window_get_cursor(window);
  if (cursor != nullptr && gdk_cursor_get_cursor_type(cursor) == GDK_CURSOR_IS_PIXMAP && isLarge(cursor)) {
    gdk_window_set_cursor(window, nullptr);
  }
}

// WebKit limits a bubble's text by wrapped lines only: a page that writes line breaks could make it any height.
void shorten(GtkWidget* part, gpointer) {
  if (GTK_IS_CONTAINER(part)) return gtk_container_forall(GTK_CONTAINER(part), shorten, nullptr);
  if (!GTK_IS_LABEL(part)) return;
  std::string text = gtk_label_get_text(GTK_LABEL(part));
  std::replace(text.begin(), text.end(), '\n', ' ');
  gtk_label_set_text(GTK_LABEL(part), text.c_str());
  gtk_label_set_lines(GTK_LABEL(part), kMaxBubbleLines);
  gtk_label_set_ellipsize(GTK_LABEL(part), PANGO_ELLIPSIZE_END);
}

// Places the bubble below or above the field, inside the page's area. Returns false if neither fits.
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

void hideFromDisabledPage(GtkWidget* bubble, GtkStateFlags, GtkWidget* page) {
  if (!gtk_widget_is_sensitive(page)) gtk_widget_hide(bubble);
}

bool showsDragImage(GtkWidget* widget) {
  return GTK_IS_WINDOW(widget) && gtk_window_get_type_hint(GTK_WINDOW(widget)) == GDK_WINDOW_TYPE_HINT_DND;
}

// GTK maps the window of the image before the drag can be cancelled. It is hidden at once; an X server may show it in
// between, so it is outside the screen until then.
gboolean onWidgetRealized(GSignalInvocationHint*, guint, const GValue* values, gpointer) {
  auto* const widget = GTK_WIDGET(g_value_get_object(values));
  if (showsDragImage(widget)) gdk_window_move(gtk_widget_get_window(widget), kOutsideTheScreen, kOutsideTheScreen);
  return TRUE;
}

void hideDragImage(GtkWidget* widget) {
  if (showsDragImage(widget)) gdk_window_hide(gtk_widget_get_window(widget));
}

// The bubble that WebKit shows at an invalid field could cover the strip: a page chooses the field's position. A bubble
// that does not fit into the page's area is hidden, and every bubble of a page that is disabled, because a prompt
// overlaps that area: the page's text could take the place of the prompt's.
gboolean onWidgetMapped(GSignalInvocationHint*, guint, const GValue* values, gpointer page) {
  GObject* const widget = G_OBJECT(g_value_get_object(values));
  hideDragImage(GTK_WIDGET(widget));
  if (GTK_IS_MENU(widget) && gtk_menu_get_attach_widget(GTK_MENU(widget)) == page) {
    watchCopying(GTK_MENU(widget), G_OBJECT(page));
  }
  if (!GTK_IS_POPOVER(widget) || gtk_popover_get_relative_to(GTK_POPOVER(widget)) != page) return TRUE;

  shorten(GTK_WIDGET(widget), nullptr);
  GdkRectangle field;
  (void)gtk_popover_get_pointing_to(GTK_POPOVER(widget), &field);
  if (gtk_widget_is_sensitive(GTK_WIDGET(page)) && placeInPage(GTK_POPOVER(widget), GTK_WIDGET(page), field)) {
    g_signal_connect_object(page, "state-flags-changed", G_CALLBACK(hideFromDisabledPage), widget, G_CONNECT_SWAPPED);
    return TRUE;
  }

  gtk_widget_set_opacity(GTK_WIDGET(widget), 0);
  g_idle_add_full(G_PRIORITY_HIGH, popDown, g_object_ref(widget), g_object_unref);
  return TRUE;
}

void onRealize(GtkWidget* view, gpointer) {
  g_signal_connect(gtk_widget_get_window(view), "notify::cursor", G_CALLBACK(onCursor), nullptr);
  g_signal_add_emission_hook(g_signal_lookup("map", GTK_TYPE_WIDGET), 0, onWidgetMapped, view, nullptr);
  g_signal_add_emission_hook(g_signal_lookup("realize", GTK_TYPE_WIDGET), 0, onWidgetRealized, nullptr, nullptr);

  // A file or an address that is dropped on a page would replace the page.
  gtk_drag_dest_unset(view);
}

}  // namespace

void connectGuards(WebKitWebView* view) {
  g_signal_connect(view, "permission-request", G_CALLBACK(onPermissionRequest), nullptr);
  g_signal_connect(view, "query-permission-state", G_CALLBACK(onPermissionState), nullptr);
  g_signal_connect(view, "run-file-chooser", G_CALLBACK(onFileChooser), nullptr);
  g_signal_connect(view, "run-color-chooser", G_CALLBACK(onColorChooser), nullptr);
  g_signal_connect(view, "print", G_CALLBACK(gtk_true), nullptr);
  g_signal_connect(view, "enter-fullscreen", G_CALLBACK(gtk_true), nullptr);
  g_signal_connect(view, "context-menu", G_CALLBACK(onContextMenu), nullptr);
  g_signal_connect(view, "query-tooltip", G_CALLBACK(onQueryTooltip), nullptr);
  g_signal_connect(view, "realize", G_CALLBACK(onRealize), nullptr);
  refuseDrags(GTK_WIDGET(view));
}

void refuseDrags(GtkWidget* widget) {
  g_signal_connect(widget, "drag-begin", G_CALLBACK(onDragBegin), nullptr);
  g_signal_connect(widget, "drag-failed", G_CALLBACK(gtk_true), nullptr);  // otherwise the image returns to its start
}
