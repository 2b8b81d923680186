// Waiting for something to become true, without asking the clock.

#pragma once

#include <chrono>
#include <functional>

namespace tools {

// Lets the default main context run until `condition` holds; it is asked once before the first event and again after
// each one. Whatever can make it true has to be an event source of that context: a child's end, a request, a window.
// Returns false when `deadline` passes first.
bool waitUntil(const std::function<bool()>& condition, std::chrono::milliseconds deadline);

}  // namespace tools
