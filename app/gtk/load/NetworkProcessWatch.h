// Reports the end of WebKit's network process. WebKitGTK has no signal for it.
//
// - The process holds the cookies and passwords of the run. WebKit replaces an ended one by a new one without them, so
//   a sign-in in progress can no longer succeed. If each new one dies while it starts, that never stops.
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; otherwise nothing is reported.
// - Main thread.

#pragma once

#include <glib.h>

#include <functional>
#include <utility>

#include "platform/UniqueFd.h"

class NetworkProcessWatch {
 public:
  explicit NetworkProcessWatch(std::function<void()> onEnded) : onEnded_(std::move(onEnded)) {}
  ~NetworkProcessWatch() { cancel(); }

  NetworkProcessWatch(const NetworkProcessWatch&) = delete;
  NetworkProcessWatch& operator=(const NetworkProcessWatch&) = delete;

  // Watches this program's network process. Looks for it for a minute if it does not run yet.
  void start();

 private:
  void watch();
  static gboolean onRetry(gpointer self);
  static gboolean onReadable(int, GIOCondition, gpointer self);
  void cancel();

  std::function<void()> onEnded_;
  platform::UniqueFd process_;  // a pidfd
  guint source_ = 0;            // of the pidfd, or of the next try
  int tries_ = 0;
};
