// Reports the end of WebKit's network process, for which WebKitGTK has no signal.
//
// - The process holds the cookies and passwords of the run. WebKit replaces an ended one by a new one that has none,
//   so a sign-in under way can no longer succeed.
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; without them nothing is reported.
// - Main thread.

#pragma once

#include <glib.h>

#include <functional>
#include <utility>

class NetworkProcessWatch {
 public:
  explicit NetworkProcessWatch(std::function<void()> onEnded) : onEnded_(std::move(onEnded)) {}
  ~NetworkProcessWatch() { cancel(); }

  NetworkProcessWatch(const NetworkProcessWatch&) = delete;
  NetworkProcessWatch& operator=(const NetworkProcessWatch&) = delete;

  // Watches this program's network process. Does nothing when it is watched already or does not run yet.
  void start();

 private:
  static gboolean onReadable(int, GIOCondition, gpointer self);
  void cancel();

  std::function<void()> onEnded_;
  int process_ = -1;  // a pidfd
  guint source_ = 0;
};
