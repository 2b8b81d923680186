// Reports that this process needs far more memory than at its start: 64 MiB and two pictures of the screen.
//
// - A page can send WebKit messages faster than this process handles them, and each may be megabytes long. WebKit keeps
//   all of them, without a limit.
// - Counts memory that is not shared with other processes or files. Checked twenty times per second.
// - Main thread; needs an open display.

#pragma once

#include <glib.h>

#include <functional>

class MemoryWatch {
 public:
  // Calls `onExceeded` once.
  explicit MemoryWatch(std::function<void()> onExceeded);
  ~MemoryWatch();

  MemoryWatch(const MemoryWatch&) = delete;
  MemoryWatch& operator=(const MemoryWatch&) = delete;

 private:
  static gboolean onTime(gpointer self);

  std::function<void()> onExceeded_;
  long max_;  // in pages
  guint source_;
};
