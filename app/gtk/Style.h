// Style sheets and style classes of the program's own widgets. Main thread; needs an open display.

#pragma once

#include <gtk/gtk.h>

// Adds `css` to the style of every widget of the program. Use the theme's named colors, so that widgets are readable
// with every theme.
void addStyle(const char* css);

void setStyleClass(GtkWidget* widget, const char* name, bool on = true);
