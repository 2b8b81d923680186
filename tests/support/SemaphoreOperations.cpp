#include "tests/support/SemaphoreOperations.h"

#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <vector>

namespace {

std::vector<support::Operation>* recorded = nullptr;

}  // namespace

std::vector<support::Operation> support::operationsOf(const std::function<void()>& body) {
  std::vector<Operation> operations;
  recorded = &operations;
  body();
  recorded = nullptr;
  return operations;
}

// Replaces the function of the C library.
extern "C" int semop(int set, sembuf* operations, std::size_t count) noexcept {
  for (std::size_t i = 0; recorded != nullptr && i < count; ++i)
    recorded->emplace_back(operations[i].sem_num, operations[i].sem_op, operations[i].sem_flg);
  return static_cast<int>(::syscall(SYS_semop, set, operations, count));
}
