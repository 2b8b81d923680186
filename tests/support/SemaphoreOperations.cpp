#include "tests/support/SemaphoreOperations.h"

#include <stdarg.h>
#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <functional>
#include <vector>

namespace {

std::vector<support::Operation>* recorded = nullptr;

int failingMember = 0;
int failingChange = 0;
int failingError = 0;
std::atomic<int> failuresLeft{0};
std::atomic<bool> removalFails{false};

bool mustFail(const sembuf& operation) {
  return failuresLeft > 0 && operation.sem_num == failingMember && operation.sem_op == failingChange &&
         failuresLeft-- > 0;
}

}  // namespace

std::vector<support::Operation> support::operationsOf(const std::function<void()>& body) {
  std::vector<Operation> operations;
  recorded = &operations;
  body();
  recorded = nullptr;
  return operations;
}

support::FailingOperation::FailingOperation(int member, int change, int error, int times) {
  failingMember = member;
  failingChange = change;
  failingError = error;
  failuresLeft = times;
}

support::FailingOperation::~FailingOperation() {
  failuresLeft = 0;
}

support::FailingRemoval::FailingRemoval() {
  removalFails = true;
}

support::FailingRemoval::~FailingRemoval() {
  removalFails = false;
}

// Replaces the function of the C library.
extern "C" int semop(int set, sembuf* operations, std::size_t count) noexcept {
  for (std::size_t i = 0; recorded != nullptr && i < count; ++i)
    recorded->emplace_back(operations[i].sem_num, operations[i].sem_op, operations[i].sem_flg);
  if (count == 1 && mustFail(*operations)) {
    errno = failingError;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_semop, set, operations, count));
}

// Replaces the function of the C library.
extern "C" int semctl(int set, int member, int command, ...) noexcept {
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);  // the union, whose largest member is a pointer
  va_end(arguments);
  if (removalFails && (command == IPC_RMID || command == SETVAL)) {
    errno = EIO;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_semctl, set, member, command, argument));
}
