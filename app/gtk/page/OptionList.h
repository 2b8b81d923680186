// The list of a select field, shown inside the page's area as a part of the window.
//
// - WebKit's own list is a window that may cover the strip and takes all keys and clicks of the desktop.
// - Below the field, above it, or over it, wherever it fits.
// - Return, Space or a click chooses. Escape, Tab, a click on the page and the loss of the focus close it.
// - Typed letters select the next option that begins with them.
// - Shows the first 10,000 options, each with at most 200 characters.
// Main thread.

#pragma once

#include <gtk/gtk.h>
#include <webkit2/webkit2.h>

#include <cstdint>
#include <string>

#include "app/gtk/Glib.h"

class OptionList {
 public:
  // Shows lists of `view` in `area`, which contains it. Both must outlive this object.
  OptionList(GtkOverlay* area, GtkWidget* view);

  OptionList(const OptionList&) = delete;
  OptionList& operator=(const OptionList&) = delete;

  // `field` is the place of the select field in the web view. Closes the list shown before.
  void show(WebKitOptionMenu* menu, const GdkRectangle& field);

  // Closes the list without a choice. Call before the widgets are destroyed.
  void close();

 private:
  static gboolean onPosition(GtkOverlay* area, GtkWidget* child, GdkRectangle* position, OptionList* self);
  static gboolean onPageInput(GtkWidget*, GdkEvent*, OptionList* self);
  static gboolean onKeyPress(GtkWidget*, GdkEventKey* event, OptionList* self);
  static gboolean onFocusOut(GtkWidget*, GdkEvent*, OptionList* self);
  static void onActivated(GtkTreeView*, GtkTreePath* path, GtkTreeViewColumn*, OptionList* self);
  static void onClosed(WebKitOptionMenu*, OptionList* self);

  void build();
  void selectNext(gunichar letter, std::uint32_t time);
  Owned<WebKitOptionMenu> remove();

  GtkOverlay* area_;
  GtkWidget* view_;
  Owned<WebKitOptionMenu> menu_;  // empty if no list is shown
  GdkRectangle field_{};
  GtkWidget* frame_ = nullptr;
  GtkTreeView* list_ = nullptr;
  int width_ = 0;                     // of the longest option
  std::string typed_;                 // case-folded
  std::uint32_t lastLetterTime_ = 0;  // of the event, in milliseconds
};
