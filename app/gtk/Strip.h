// The strip above the page. Shows the page's site, a warning if others can read the connection, whether a part of the
// page is hidden, and a progress line.
//
// - Lies outside the page's area, where no page can draw.
// - 20 pixels high, higher only if the user's font needs it.
// - A host that is too long is cut at its start: its end identifies the owner.
// - A warning exchanges the theme's text and background color.
// Main thread.

#pragma once

#include <gtk/gtk.h>

#include <string>

#include "app/gtk/page/Site.h"

// What the strip shows for a site: a padlock for a page that came over TLS, a warning for one that others can read.
struct StripText {
  const char* icon = nullptr;
  std::string host;
  std::string warning;         // empty if there is none
  std::string accessibleText;  // all of it in one sentence, for a screen reader
};

StripText stripText(const Site& site);

class Strip {
 public:
  Strip();
  ~Strip();

  Strip(const Strip&) = delete;
  Strip& operator=(const Strip&) = delete;

  // Owned by its container.
  GtkWidget* widget() const { return overlay_; }

  void show(const Site& site);

  // Whether a part of the page lies below its area. Then the strip says how to reach it.
  void showPartHidden(bool hidden);

  // `fraction` of the page has arrived, 0 to 1. The line pulses until the first data arrive, unless the user has
  // disabled animations.
  void showProgress(double fraction);
  void hideProgress();

 private:
  static gboolean onPulse(gpointer self);
  void stopPulse();
  void updateAccessibleText();

  GtkWidget* overlay_;
  GtkWidget* background_;  // as high as a line of text
  GtkWidget* row_;
  GtkWidget* icon_;
  GtkWidget* host_;
  GtkWidget* warning_;
  GtkWidget* partHidden_;
  std::string siteText_;  // for a screen reader
  GtkWidget* line_;
  guint pulse_ = 0;
};
