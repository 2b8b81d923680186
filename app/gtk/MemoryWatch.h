// Kills the processes of the page when it needs too much memory:
//
// - this process 64 MiB and two pictures of the screen more than at its start, without memory that it shares with other
//   processes or files. A page can send WebKit messages faster than the main thread handles them, and each may be
//   megabytes long. WebKit receives and keeps all of them, without a limit. While the main thread handles one, only
//   another thread can stop the page: by its end, because WebKit has no function for that which other threads may call.
// - WebKit's processes 1 GiB together. Otherwise a page that opens frames without end takes all memory of the machine.
//   WebKit's own limit is checked by the page's main thread, which the page can keep busy.
//
// A thread checks a hundred times per second while the main loop is busy, and twenty times per second of processor time
// that a process of WebKit uses. It sleeps while nothing happens, so that an idle window wakes no processor.
//
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; otherwise it only reports the first case.
// - Main thread; needs an open display.

#pragma once

#include <glib.h>

#include <atomic>
#include <functional>
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
  void watchMemory();
  bool takeActivity();
  void sleep();
  void wake();

  static GSourceFuncs functions;

  std::function<void()> onExceeded_;
  platform::UniqueFd figures_;
  long max_;  // in pages
  GSource* source_;

  std::atomic<bool> waiting_{false};   // the main loop waits for events
  std::atomic<bool> iterated_{true};   // the main loop was busy since the last check
  std::atomic<bool> sleeping_{false};  // the thread waits for a signal
  std::atomic<bool> exceeded_{false};
  std::atomic<bool> closing_{false};
  std::thread thread_;
};
