// Kills the processes of the page when this process needs far more memory than at its start: 64 MiB and two pictures of
// the screen.
//
// - A page can send WebKit messages faster than the main thread handles them, and each may be megabytes long. WebKit
//   receives and keeps all of them, without a limit. While the main thread handles one, only another thread can stop
//   the page: by its end, because WebKit has no function for that which other threads may call.
// - Counts memory that is not shared with other processes or files.
// - A thread checks a hundred times per second while the main loop is busy. It sleeps while the main loop waits for
//   events, so that an idle window wakes no processor.
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; otherwise it only reports.
// - Main thread; needs an open display.

#pragma once

#include <glib.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>

#include "platform/UniqueFd.h"

class MemoryWatch {
 public:
  // Calls `onExceeded` once, on the main thread.
  explicit MemoryWatch(std::function<void()> onExceeded);
  ~MemoryWatch();

  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;

 private:
  struct Source {
    GSource base;
    MemoryWatch* watch;
  };

  static gboolean onPrepare(GSource* source, int* timeout);
  static gboolean onCheck(GSource* source);
  static gboolean onDispatch(GSource* source, GSourceFunc, gpointer);

  void run();

  static GSourceFuncs functions;

  std::function<void()> onExceeded_;
  platform::UniqueFd figures_;
  long max_;  // in pages
  GSource* source_;

  std::mutex mutex_;  // guards the rest, except the thread
  std::condition_variable wake_;
  bool waiting_ = false;  // the main loop waits for events
  bool iterated_ = true;  // the main loop was busy since the last check
  bool exceeded_ = false;
  bool closing_ = false;
  std::thread thread_;
};
