// Style sheets and their classes for the program's own widgets. Main thread; needs an open display.

#pragma once

#include <gtk/gtk.h>

// From now on every widget of the program is drawn by `css` too. Colours come from the theme by name, so that a widget
// is readable wherever the theme is.
void useStyle(const char* css);

void setStyleClass(GtkWidget* widget, const char* name, bool on = true);
