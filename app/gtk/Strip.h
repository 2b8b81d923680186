// The strip above the page: whose page it is, whether others can listen, and a thin line while a page loads.
//
// It lies outside the page's area, where no page can draw. It is 20 high, more only where a person's own font needs it.
// A name that is too long loses its beginning: the end says whose it is. A warning turns the theme's colours over,
// which is readable wherever the theme is. Main thread.

#pragma once

#include <gtk/gtk.h>

#include "app/gtk/page/Site.h"

constexpr int kStripHeight = 20;

class Strip {
 public:
  Strip();
  ~Strip();

  Strip(const Strip&) = delete;
  Strip& operator=(const Strip&) = delete;

  // Owned by the container that it is put into.
  GtkWidget* widget() const { return overlay_; }

  void show(const Site& site);

  // How much of the page has come, 0 to 1. The line moves by itself until the first data are there, so that waiting
  // looks like waiting; it does not where the person has turned animations off.
  void showProgress(double fraction);
  void hideProgress();

 private:
  static gboolean onBeat(gpointer self);
  void stopBeating();

  GtkWidget* overlay_;
  GtkWidget* ground_;  // as high as a line of text, whatever stands on it
  GtkWidget* row_;
  GtkWidget* icon_;
  GtkWidget* host_;
  GtkWidget* warning_;
  GtkWidget* line_;
  guint beat_ = 0;
};
