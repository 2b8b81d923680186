#include "logging/BinaryLock.h"

#include <unistd.h>

#include <cerrno>
#include <string>
#include <thread>

#include "platform/Machine.h"
#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"
#include "platform/WaitLimit.h"

namespace tarn {
namespace {

using platform::SemaphoreSet;

constexpr int kMembers = 2;
constexpr int kReferences = 0;
constexpr int kMutex = 1;

}  // namespace

BinaryLock::~BinaryLock() {
  if (id_ != 0) finalize();
}

bool BinaryLock::create(const std::string& path, int projectId) {
  if (id_ != kClosed) return true;
  path_ = path;
  projectId_ = projectId;
  Attachment made;
  if (!attach(made)) return false;
  count_ = made.count;
  countedProcess_ = platform::currentProcessId();
  id_ = made.id;
  return true;
}

bool BinaryLock::attach(Attachment& made) const {
  const key_t key = SemaphoreSet::keyFor(path_, projectId_);
  if (key == -1) return false;

  const auto initialize = [](const SemaphoreSet& set) { return set.setValue(kMutex, 1); };
  const auto countCaller = [&](const SemaphoreSet& set) {
    made.count = set.change(kReferences, +1, kCounted) ? kCounted : kUncounted;
    return made.count == kCounted || errno == ERANGE;
  };
  SemaphoreSet::AttachSteps steps{kMembers, initialize, countCaller};
  steps.mutex = kMutex;
  return SemaphoreSet::attach(path_, key, steps, made.id);
}

bool BinaryLock::detach(const Attachment& attachment) {
  if (attachment.count == kUncounted) return true;
  const SemaphoreSet set(attachment.id);
  if (!set.change(kReferences, -1, attachment.count)) return false;
  return set.value(kReferences) != 0 || set.remove();
}

bool BinaryLock::wait() {
  const pid_t process = platform::currentProcessId();
  countForked(process);
  int id = id_;
  if (!SemaphoreSet(id).take(kMutex)) {
    if (!SemaphoreSet::wasRemoved(errno) || !reopen(id)) return false;
    id = id_;
    if (!SemaphoreSet(id).take(kMutex)) return false;
  }
  waitForOtherThread(process);
  taken_.store(id, std::memory_order_relaxed);
  return true;
}

// The count does not follow a fork. Only one thread counts the process. A forked process mostly leaves through `_exit`,
// which closes no lock: the undo detaches it.
void BinaryLock::countForked(pid_t process) {
  pid_t counted = countedProcess_.load(std::memory_order_relaxed);
  if (counted == process || id_ == kClosed) return;
  if (!countedProcess_.compare_exchange_strong(counted, process)) return;
  count_ = SemaphoreSet(id_).change(kReferences, +1, kCountedAfterFork) ? kCountedAfterFork : kUncounted;
}

// Opens the lock again after its set was removed. Returns false if it is closed or cannot be opened.
bool BinaryLock::reopen(int removed) {
  if (removed == kClosed) return false;
  if (id_ != removed) return true;  // another thread has opened or closed the lock
  const bool stillExists = SemaphoreSet(removed).value(kMutex) != -1;
  if (stillExists) return true;
  Attachment made;
  if (!attach(made)) return false;
  if (id_.compare_exchange_strong(removed, made.id)) {
    count_ = made.count;
    return true;
  }
  // Another thread was faster.
  const platform::PathLock turn(path_);
  (void)detach(made);
  return true;
}

// A thread that took the lock before its set was removed may still write. The limit is for a caller that never
// releases.
void BinaryLock::waitForOtherThread(pid_t process) {
  pid_t holder = kNobody;
  if (holdingProcess_.compare_exchange_strong(holder, process, std::memory_order_acquire)) return;
  const auto deadline = platform::WaitLimit::deadline();
  while (holder == process && platform::WaitLimit::Clock::now() < deadline) {
    std::this_thread::yield();
    holder = kNobody;
    if (holdingProcess_.compare_exchange_strong(holder, process, std::memory_order_acquire)) return;
  }
  holdingProcess_ = process;
}

bool BinaryLock::signal() {
  return SemaphoreSet(id_).change(kMutex, -1, SEM_UNDO | IPC_NOWAIT);
}

bool BinaryLock::release() {
  const int taken = taken_.load(std::memory_order_relaxed);
  taken_.store(kClosed, std::memory_order_relaxed);
  holdingProcess_.store(kNobody, std::memory_order_release);
  return SemaphoreSet(taken == kClosed ? id_.load() : taken).release(kMutex);
}

bool BinaryLock::finalize() {
  const Attachment former{id_.exchange(kClosed), count_};
  holdingProcess_ = kNobody;
  if (former.id == kClosed) return true;
  const bool isInherited = countedProcess_ != ::getpid();
  return isInherited || detach(former);
}

int BinaryLock::getReferenceCount() const {
  return id_ == kClosed ? -1 : SemaphoreSet(id_).value(kReferences);
}

}  // namespace tarn
