// Records the semaphore operations of this process, for a test that links SemaphoreOperations.cpp.

#pragma once

#include <functional>
#include <tuple>
#include <vector>

namespace support {

// Member of the set, change, flags.
using Operation = std::tuple<int, int, int>;

// What `semop` is called with while `body` runs, failed calls included. `body` uses one thread.
std::vector<Operation> operationsOf(const std::function<void()>& body);

}  // namespace support
