// Waits for conditions without polling.

#pragma once

#include <chrono>
#include <functional>

namespace tools {

// Runs the default main context until `condition` is true. Checks it before the first event and after each one:
// whatever makes it true must be an event source of that context, such as a child's end, a request or a window. Returns
// false after `timeout`.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds timeout);

// Waits until a descriptor has something to read or has reached its end, without running a context. Returns false after
// `timeout`.
bool waitUntilReadable(int fd, std::chrono::milliseconds timeout);

}  // namespace tools
