#include "app/gtk/page/ClipboardGuard.h"

#include <dlfcn.h>
#include <gtk/gtk.h>

#include "app/gtk/page/FreshPress.h"

namespace {

FreshPress lastCopy;

}  // namespace

void permitCopy() {
  lastCopy.pressed(g_get_monotonic_time());
}

// Name fixed by GTK. WebKit treats FALSE as a clipboard that another program keeps.
gboolean gtk_clipboard_set_with_data(GtkClipboard* clipboard, const GtkTargetEntry* targets, guint count,
                                     GtkClipboardGetFunc get, GtkClipboardClearFunc clear, gpointer data) {
  const bool isPrimary = gtk_clipboard_get_selection(clipboard) == GDK_SELECTION_PRIMARY;
  if (isPrimary || !lastCopy.take(g_get_monotonic_time())) return FALSE;
  static const auto original =
      reinterpret_cast<decltype(&gtk_clipboard_set_with_data)>(dlsym(RTLD_NEXT, "gtk_clipboard_set_with_data"));
  return original(clipboard, targets, count, get, clear, data);
}
