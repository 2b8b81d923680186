#include "platform/SemaphoreSet.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {
namespace {

union SemaphoreArgument {
  int value;
  semid_ds* status;
  unsigned short* values;
};

// Falling asleep costs a context switch on both sides, and as long as somebody sleeps every release hands the member
// over to a sleeper; a log line is written within a few microseconds. Giving way between the tries lets a holder run
// that was interrupted, and so keeps the slowest lines fast when there are more processes than processors.
constexpr int triesBeforeSleeping = 100;

// Every try in vain keeps the kernel's own lock of the set from the holder who wants to release, so tries come no
// faster than lines are written.
constexpr std::chrono::microseconds betweenTries{4};

void waitBetweenTries() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point next = Clock::now() + betweenTries;
  std::this_thread::yield();
  while (Clock::now() < next) {
  }
}

// The kernel orders the threads that meet at a semaphore, and the language knows nothing of it; this tells.
std::atomic<unsigned> handOvers{0};

}  // namespace

key_t SemaphoreSet::keyFor(const std::string& path, int projectNumber) {
  return ::ftok(path.c_str(), projectNumber);
}

int SemaphoreSet::find(key_t key, int members, int permissions) {
  return ::semget(key, members, permissions);
}

int SemaphoreSet::create(key_t key, int members) {
  return ::semget(key, members, IPC_CREAT | 0666);
}

bool SemaphoreSet::change(int member, int by, int flags) const {
  sembuf operation{};
  operation.sem_num = static_cast<unsigned short>(member);
  operation.sem_op = static_cast<short>(by);
  operation.sem_flg = static_cast<short>(flags);

  if (by > 0) handOvers.fetch_add(1, std::memory_order_release);
  while (::semop(id_, &operation, 1) != 0) {
    if (errno != EINTR) return false;
  }
  if (by < 0) (void)handOvers.load(std::memory_order_acquire);
  return true;
}

bool SemaphoreSet::take(int member) const {
  for (int tries = 0; tries < triesBeforeSleeping; ++tries) {
    if (change(member, -1, SEM_UNDO | IPC_NOWAIT)) return true;
    if (errno != EAGAIN) return false;
    waitBetweenTries();
  }
  return change(member, -1, SEM_UNDO);
}

int SemaphoreSet::value(int member) const {
  return ::semctl(id_, member, GETVAL);
}

bool SemaphoreSet::setValue(int member, int value) const {
  SemaphoreArgument argument{};
  argument.value = value;
  return ::semctl(id_, member, SETVAL, argument) != -1;
}

bool SemaphoreSet::remove() const {
  return ::semctl(id_, 0, IPC_RMID) != -1;
}

bool SemaphoreSet::wasRemoved(int error) {
  return error == EIDRM || error == EINVAL;
}

}  // namespace platform
