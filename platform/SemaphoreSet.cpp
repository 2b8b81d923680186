#include "platform/SemaphoreSet.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <thread>

#include "platform/CancellationScope.h"
#include "platform/Failure.h"
#include "platform/PathLock.h"
#include "platform/Users.h"

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

// How long a set must show no trace of its creator before another process assigns the first value.
constexpr std::chrono::milliseconds kAbandonedAfter{20};
constexpr std::chrono::milliseconds kAbandonedCheckInterval{1};

// The longest wait while a set is stuck. Longer than the queue of many writing processes.
constexpr std::chrono::milliseconds kStuckWait{2};
constexpr int kNoSet = -1;

// The set of the last take that timed out, until it is taken. A second stuck set is found when the first is free.
std::atomic<int> stuckSet{kNoSet};

// The sets that could be neither released nor removed, so that this process keeps them: process and set in one number,
// because a forked process inherits this memory, but not the sets. A line has two locks.
using KeptSet = std::uint64_t;
constexpr int kProcessShift = 32;
std::array<std::atomic<KeptSet>, 4> keptSets{};
std::atomic<bool> everKept{false};

using Clock = WaitLimit::Clock;

KeptSet keptByThisProcess(int set) {
  return KeptSet{static_cast<std::uint32_t>(::getpid())} << kProcessShift | static_cast<std::uint32_t>(set);
}

void noteKept(int set) {
  everKept = true;
  const KeptSet kept = keptByThisProcess(set);
  for (std::atomic<KeptSet>& each : keptSets) {
    KeptSet former = each;
    const bool isFree = former >> kProcessShift != kept >> kProcessShift;
    if (isFree && each.compare_exchange_strong(former, kept)) return;
  }
}

// Returns true to one caller, if this process keeps the set.
bool forgetKept(int set) {
  if (!everKept.load(std::memory_order_relaxed)) return false;
  const KeptSet kept = keptByThisProcess(set);
  return std::any_of(keptSets.begin(), keptSets.end(), [kept](std::atomic<KeptSet>& each) {
    KeptSet expected = kept;
    return each.compare_exchange_strong(expected, 0);
  });
}

void waitForRetry() {
  const Clock::time_point next = Clock::now() + kRetryInterval;
  std::this_thread::yield();
  while (Clock::now() < next) {
  }
}

void noteResult(int set, int error) {
  const int stuck = stuckSet.load(std::memory_order_relaxed);
  if (error == EAGAIN) {
    if (stuck == kNoSet) stuckSet = set;
  } else if (stuck == set) {
    stuckSet = kNoSet;
  }
}

// The stuck set may have been replaced by this one.
void noteNewSet(int set) {
  if (stuckSet != set) stuckSet = kNoSet;
}

// macOS also reports EINVAL if the process has used up its undo entries, of which it has 10.
int errorOf(int id, int error) {
  const bool mayExist = error == EINVAL && (::semctl(id, 0, GETVAL) != -1 || !SemaphoreSet::wasRemoved(errno));
  return mayExist ? ENOSPC : error;
}

// Inline: after a system call every return costs more than the work of this function.
inline bool operate(int id, int member, int delta, int flags) {
  sembuf operation{};
  operation.sem_num = static_cast<unsigned short>(member);
  operation.sem_op = static_cast<short>(delta);
  operation.sem_flg = static_cast<short>(flags);
  while (::semop(id, &operation, 1) != 0) {
    if (errno == EINTR) continue;
    errno = errorOf(id, errno);
    return false;
  }
  return true;
}

// Returns no value if the set was removed or may not be read.
std::optional<semid_ds> statusOf(int id) {
  semid_ds status{};
  SemaphoreArgument argument{};
  argument.status = &status;
  if (::semctl(id, 0, IPC_STAT, argument) == -1) return std::nullopt;
  return status;
}

// The creator cannot be changed, the owner can: by the creator.
bool isTrusted(const ipc_perm& permissions) {
  constexpr uid_t kRoot = 0;
  const auto isOneOf = [&](uid_t user) { return user == kRoot || user == ::geteuid() || user == consoleUser(); };
  return isOneOf(permissions.cuid) && isOneOf(permissions.uid);
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
  const CancellationScope whole;
  const PathLock turn(path);
  for (int tries = 0; tries < kMaxAttachTries; ++tries) {
    if (!findOrCreate(key, steps, static_cast<bool>(turn), id)) return false;
    if (!steps.countCaller || steps.countCaller(SemaphoreSet(id))) {
      noteNewSet(id);
      return true;
    }
    if (!wasRemoved(errno)) return false;
  }
  return false;
}

bool SemaphoreSet::findOrCreate(key_t key, const AttachSteps& steps, bool isAlone, int& id) {
  id = find(key, steps.minMembers, steps.permissions);
  const bool isNew = id == -1;
  if (isNew) id = create(key, steps.members);
  if (id == -1) return false;

  const SemaphoreSet set(id);
  if (steps.mutex != kNoMutex && !set.isUsable(steps.members)) {
    id = -1;
    return false;
  }
  if (isNew) return steps.initialize(set);
  if (steps.mutex != kNoMutex && isAlone) set.raiseIfAbandoned(steps.mutex);
  return true;
}

// A set that was removed since counts as usable: the next operation reports the removal.
bool SemaphoreSet::isUsable(int members) const {
  const std::optional<semid_ds> status = statusOf(id_);
  if (!status && wasRemoved(errno)) return true;
  if (status && static_cast<int>(status->sem_nsems) >= members && isTrusted(status->sem_perm)) return true;
  errno = EPERM;
  return false;
}

bool SemaphoreSet::isUntouched(int mutex) const {
  if (value(mutex) != 0 || ::semctl(id_, mutex, GETPID) != 0) return false;
  const std::optional<semid_ds> status = statusOf(id_);
  return status && status->sem_otime == 0;
}

// Not `setValue`: adding also is right if a process waits already.
void SemaphoreSet::raiseIfAbandoned(int mutex) const {
  const Clock::time_point end = Clock::now() + kAbandonedAfter;
  while (isUntouched(mutex)) {
    if (Clock::now() >= end) {
      (void)change(mutex, +1, 0);
      return;
    }
    std::this_thread::sleep_for(kAbandonedCheckInterval);
  }
}

bool SemaphoreSet::change(int member, int delta, int flags) const {
  return operate(id_, member, delta, flags);
}

bool SemaphoreSet::take(int member) const {
  const bool isStuck = stuckSet.load(std::memory_order_relaxed) != kNoSet;
  const bool taken = operate(id_, member, -1, SEM_UNDO | IPC_NOWAIT) || (errno == EAGAIN && wait(member, isStuck));
  if (isStuck || !taken) noteResult(id_, taken ? 0 : errno);
  return taken;
}

bool SemaphoreSet::wait(int member, bool isStuck) const {
  const Clock::time_point deadline = WaitLimit::deadline();
  if (forgetKept(id_)) (void)release(member);
  if (isStuck) return takeBefore(std::min(deadline, Clock::now() + kStuckWait), member);
  for (int tries = 1; tries < kTriesBeforeBlocking; ++tries) {
    waitForRetry();
    if (operate(id_, member, -1, SEM_UNDO | IPC_NOWAIT)) return true;
    if (errno != EAGAIN) return false;
  }
  return takeBefore(deadline, member);
}

bool SemaphoreSet::release(int member) const {
  (void)forgetKept(id_);  // of an earlier try
  if (operate(id_, member, +1, SEM_UNDO)) return true;
  giveUp(member);
  return false;
}

// `setValue` for a set of another user, which only its owner may remove.
void SemaphoreSet::giveUp(int member) const {
  static std::atomic<bool> reported{false};
  const int error = errno;
  if (!remove() && !setValue(member, 1)) {
    noteKept(id_);
  } else if (!reported.exchange(true)) {
    std::fprintf(stderr, "A lock of the log could not be released (%s); it was removed.\n", errorText(error).c_str());
  }
  errno = error;
}

// Calls `semop` whenever that cannot wait.
bool SemaphoreSet::detach(int member) const {
  return value(member) == 0 ? takeBefore(WaitLimit::deadline(), member) : change(member, -1, SEM_UNDO);
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
