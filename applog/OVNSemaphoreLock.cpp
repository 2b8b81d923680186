#include "applog/OVNSemaphoreLock.h"

#include <string>

#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"
#include "platform/Users.h"

namespace {

using platform::SemaphoreSet;

constexpr int kMembers = 2;
constexpr int kFreeSlots = 0;
constexpr int kAttached = 1;

std::string keyPathOf(LockType type) {
  return type == UserLock ? platform::homeFolderOfConsoleUser() : "/tmp";
}

}  // namespace

OVNSemaphoreLock::OVNSemaphoreLock(int id, int count, LockType type)
    : id(id), maxCount(count), initialCount(count), keyPath_(keyPathOf(type)) {
  const key_t key = keyPath_.empty() ? -1 : SemaphoreSet::keyFor(keyPath_, id);
  if (key == -1) return;
  const auto initialize = [&](const SemaphoreSet& set) { return set.setValue(kFreeSlots, count); };
  const auto countCaller = [](const SemaphoreSet& set) { return set.change(kAttached, +1, SEM_UNDO); };
  if (!SemaphoreSet::attach(keyPath_, key, {kMembers, initialize, countCaller}, semid)) semid = -1;
}

OVNSemaphoreLock::~OVNSemaphoreLock() {
  if (semid == -1) return;
  const platform::PathLock lock(keyPath_);
  const SemaphoreSet set(semid);
  if (set.change(kAttached, -1, SEM_UNDO | IPC_NOWAIT) && set.value(kAttached) == 0) set.remove();
}

bool OVNSemaphoreLock::AcquireLock() {
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(kFreeSlots, -1, SEM_UNDO | IPC_NOWAIT)) return false;
  locked = true;
  return true;
}

bool OVNSemaphoreLock::isLocked() {
  return semid != -1 && SemaphoreSet(semid).value(kFreeSlots) < maxCount;
}

bool OVNSemaphoreLock::releaseLock() {
  if (!locked) return true;
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(kFreeSlots, +1, SEM_UNDO)) return false;
  locked = false;
  return true;
}

int OVNSemaphoreLock::getCurrentLockCount() const {
  return semid == -1 ? 0 : SemaphoreSet(semid).value(kFreeSlots);
}
