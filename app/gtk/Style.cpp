#include "app/gtk/Style.h"

#include "app/gtk/Glib.h"

void addStyle(const char* css) {
  const Owned<GtkCssProvider> provider(gtk_css_provider_new());
  gtk_css_provider_load_from_data(provider.get(), css, -1, nullptr);
  gtk_style_context_add_provider_for_screen(gdk_screen_get_default(), GTK_STYLE_PROVIDER(provider.get()),
                                            GTK_STYLE_PROVIDER_PRIORITY_APPLICATION);
}

void setStyleClass(GtkWidget* widget, const char* name, bool on) {
  GtkStyleContext* const style = gtk_widget_get_style_context(widget);
  if (on) {
    gtk_style_context_add_class(style, name);
  } else {
    gtk_style_context_remove_class(style, name);
  }
}
