#include "platform/SemaphoreSet.h"

#include <atomic>
#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/PathLock.h"

namespace platform {
namespace {

union SemaphoreArgument {
  int value;
  semid_ds* status;
  unsigned short* values;
};

constexpr int kMaxAttachTries = 3;

// A blocking wait costs a context switch on both sides, and while a process waits, every release passes the semaphore
// to a waiter. A log line takes a few microseconds, so trying first is cheaper. The yield between two tries lets a
// preempted holder run, which limits the worst latency when there are more processes than processors.
constexpr int kTriesBeforeBlocking = 100;

// A failed try holds the kernel's lock of the set and delays the holder's release. The interval is about the time that
// one log line takes.
constexpr std::chrono::microseconds kRetryInterval{4};

void waitForRetry() {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point next = Clock::now() + kRetryInterval;
  std::this_thread::yield();
  while (Clock::now() < next) {
  }
}

// A semaphore orders threads in the kernel, but the C++ memory model does not know semop. Each increment releases and
// each decrement acquires this counter, which gives the two a happens-before relation.
std::atomic<unsigned> releaseCount{0};

bool findOrCreate(key_t key, const SemaphoreSet::AttachSteps& steps, int& id) {
  id = SemaphoreSet::find(key, steps.minMembers, steps.permissions);
  if (id != -1) return true;
  id = SemaphoreSet::create(key, steps.members);
  return id != -1 && steps.initialize(SemaphoreSet(id));
}

}  // namespace

key_t SemaphoreSet::keyFor(const std::string& path, int projectNumber) {
  return ::ftok(path.c_str(), projectNumber);
}

int SemaphoreSet::find(key_t key, int minMembers, int permissions) {
  return ::semget(key, minMembers, permissions);
}

int SemaphoreSet::create(key_t key, int members) {
  return ::semget(key, members, IPC_CREAT | 0666);
}

bool SemaphoreSet::attach(const std::string& path, key_t key, const AttachSteps& steps, int& id) {
  const PathLock lock(path);
  for (int tries = 0; tries < kMaxAttachTries; ++tries) {
    if (!findOrCreate(key, steps, id)) return false;
    if (!steps.countCaller || steps.countCaller(SemaphoreSet(id))) return true;
    if (!wasRemoved(errno)) return false;
  }
  return false;
}

bool SemaphoreSet::change(int member, int delta, int flags) const {
  sembuf operation{};
  operation.sem_num = static_cast<unsigned short>(member);
  operation.sem_op = static_cast<short>(delta);
  operation.sem_flg = static_cast<short>(flags);

  if (delta > 0) releaseCount.fetch_add(1, std::memory_order_release);
  while (::semop(id_, &operation, 1) != 0) {
    if (errno != EINTR) return false;
  }
  if (delta < 0) (void)releaseCount.load(std::memory_order_acquire);
  return true;
}

bool SemaphoreSet::take(int member) const {
  for (int tries = 0; tries < kTriesBeforeBlocking; ++tries) {
    if (change(member, -1, SEM_UNDO | IPC_NOWAIT)) return true;
    if (errno != EAGAIN) return false;
    waitForRetry();
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
