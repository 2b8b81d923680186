// The clock of a load on the GLib main loop: rings when no data has arrived for as long as a request waits, 60 seconds,
// which is what a Cocoa request waits. WebKitGTK has no time-out of its own. Main thread only.

#pragma once

#include <glib.h>

#include <functional>
#include <utility>

#include "app/gtk/LoadTracker.h"

class LoadClock : public DataClock {
 public:
  explicit LoadClock(std::function<void()> onTimeOut) : onTimeOut_(std::move(onTimeOut)) {}
  ~LoadClock() override { stop(); }

  LoadClock(const LoadClock&) = delete;
  LoadClock& operator=(const LoadClock&) = delete;

  void wind() override;
  void stop() override;

 private:
  static gboolean ring(gpointer self);

  std::function<void()> onTimeOut_;
  guint source_ = 0;
};
