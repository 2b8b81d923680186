// Lets events be served while a function waits, and scopes in which autoreleased objects are collected.

#pragma once

#include <chrono>

namespace platform {

// The clock of the run loop; never goes back.
std::chrono::steady_clock::time_point runLoopTime();

// Runs the calling thread's run loop for that long, and a little longer while the last event is being served. On Linux
// that is the thread's default main context of GLib's, the process's own for the first thread; a thread that has none
// just sleeps, since events of another thread are not its to serve. On macOS every thread has one; it runs in its
// default mode, and the thread sleeps once there is nothing that could happen or a handler has thrown. Needs no loop
// that runs already.
void runLoopFor(std::chrono::milliseconds duration);

// Scopes in which a system with autoreleased objects collects them; elsewhere they mean nothing and cost nothing.
//
// Scopes of a thread nest: the last one opened is closed first, on the thread that opened it.

// Never null. Owned by the caller until it is handed to `closeAutoreleasePool`.
void* openAutoreleasePool();

// Releases what was autoreleased since the pool was opened. Null is none.
void closeAutoreleasePool(void* pool);

// A pool that lives as long as its C++ scope.
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
