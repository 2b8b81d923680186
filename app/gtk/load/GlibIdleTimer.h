// The idle timer of a page on the GLib main loop. Expires after 60 seconds, the request timeout of Cocoa.
//
// WebKitGTK has no timeout. Main thread only.

#pragma once

#include <glib.h>

#include <functional>
#include <utility>

#include "app/gtk/load/LoadTracker.h"

class GlibIdleTimer : public IdleTimer {
 public:
  explicit GlibIdleTimer(std::function<void()> onExpired) : onExpired_(std::move(onExpired)) {}
  ~GlibIdleTimer() override { cancel(); }

  GlibIdleTimer(const GlibIdleTimer&) = delete;
  GlibIdleTimer& operator=(const GlibIdleTimer&) = delete;

  void start() override;
  void cancel() override;

 private:
  static gboolean expire(gpointer self);

  std::function<void()> onExpired_;
  guint source_ = 0;
};
