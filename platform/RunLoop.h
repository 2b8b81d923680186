// Lets events be served while a function waits.

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

}  // namespace platform
