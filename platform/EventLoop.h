// Runs the calling thread's run loop, and manages autorelease pools.

#pragma once

#include <chrono>

namespace platform {

// The monotonic clock of the run loop.
std::chrono::steady_clock::time_point runLoopTime();

// Runs the calling thread's run loop for `duration`, longer if the last event is still being handled. May be called
// from an event handler.
//
// - Linux: runs the thread's default main context of GLib, or the global one on the first thread. A thread without a
//   context sleeps.
// - macOS: runs the thread's run loop in its default mode. The thread sleeps if the run loop has no sources or an event
//   handler has thrown.
void runLoopFor(std::chrono::milliseconds duration);

// Opens an autorelease pool. Linux has no pools: both functions do nothing.
//
// - Never null. The caller passes the pool to `closeAutoreleasePool`.
// - Pools of a thread nest. Close the last one opened first, on the same thread.
void* openAutoreleasePool();

// Releases the objects that were autoreleased since the pool was opened. Ignores null.
void closeAutoreleasePool(void* pool);

// Keeps an autorelease pool open for a scope.
class AutoreleaseScope {
 public:
  AutoreleaseScope() : pool_(openAutoreleasePool()) {}
  AutoreleaseScope(const AutoreleaseScope&) = delete;
  AutoreleaseScope& operator=(const AutoreleaseScope&) = delete;
  ~AutoreleaseScope() { closeAutoreleasePool(pool_); }

 private:
  void* pool_;
};

}  // namespace platform
