// Records the semaphore operations of this process. Requires SemaphoreOperations.cpp, which replaces `semop`.

#pragma once

#include <functional>
#include <tuple>
#include <vector>

namespace support {

// Member of the set, change, flags.
using Operation = std::tuple<int, int, int>;

// Returns the operations passed to `semop` while `body` runs, including those of failed calls. `body` uses one thread.
std::vector<Operation> operationsOf(const std::function<void()>& body);

}  // namespace support
