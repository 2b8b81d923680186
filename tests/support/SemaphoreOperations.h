// Records the semaphore operations of this process, and makes one fail. Requires SemaphoreOperations.cpp, which
// replaces `semop` and `semctl`.

#pragma once

#include <functional>
#include <tuple>
#include <vector>

namespace support {

// Member of the set, change, flags.
using Operation = std::tuple<int, int, int>;

// Returns the operations passed to `semop` while `body` runs, including those of failed calls. `body` uses one thread.
std::vector<Operation> operationsOf(const std::function<void()>& body);

// While it exists, the next `times` operations on a member in a direction (+1, -1) fail with `error` and have no
// effect.
class FailingOperation {
 public:
  FailingOperation(int member, int change, int error, int times = 1);
  FailingOperation(const FailingOperation&) = delete;
  FailingOperation& operator=(const FailingOperation&) = delete;
  ~FailingOperation();
};

// While it exists, no set can be removed, and no value assigned.
class FailingRemoval {
 public:
  FailingRemoval();
  FailingRemoval(const FailingRemoval&) = delete;
  FailingRemoval& operator=(const FailingRemoval&) = delete;
  ~FailingRemoval();
};

}  // namespace support
