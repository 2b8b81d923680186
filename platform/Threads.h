// The system's own number of the calling thread.

#pragma once

#include <cstdint>

namespace platform {

// The number that `ps -T`, on macOS `sample`, and debuggers show. Cheap: asked of the system once a thread, and again
// after a fork.
std::uint64_t currentThreadId();

}  // namespace platform
