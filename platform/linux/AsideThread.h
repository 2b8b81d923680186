// Work that nobody waits for.

#pragma once

#include <functional>

namespace platform {

// Does the work on a thread of its own, which no signal of the program's interrupts; false when there can be no thread.
bool doAside(const std::function<void()>& work);

}  // namespace platform
