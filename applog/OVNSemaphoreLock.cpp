#include "applog/OVNSemaphoreLock.h"

#include <cerrno>

#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"
#include "platform/Users.h"

namespace {

using platform::SemaphoreSet;

constexpr int members = 2;
constexpr int freeSlots = 0;
constexpr int attached = 1;

std::string keyPathOf(LockType type) {
  return type == UserLock ? platform::homeFolderOfConsoleUser() : "/tmp";
}

int findOrMakeSet(key_t key, int count) {
  const int found = SemaphoreSet::find(key);
  if (found != -1) return found;
  const int made = SemaphoreSet::create(key, members);
  return made != -1 && SemaphoreSet(made).setValue(freeSlots, count) ? made : -1;
}

int attachToSet(const std::string& path, int id, int count) {
  const key_t key = path.empty() ? -1 : SemaphoreSet::keyFor(path, id);
  if (key == -1) return -1;

  const platform::PathLock oneAtATime(path);
  for (int tries = 0; tries < 3; ++tries) {
    const int semid = findOrMakeSet(key, count);
    if (semid == -1) return -1;
    if (SemaphoreSet(semid).change(attached, +1, SEM_UNDO)) return semid;
    if (!SemaphoreSet::wasRemoved(errno)) return -1;
  }
  return -1;
}

}  // namespace

OVNSemaphoreLock::OVNSemaphoreLock(int id, int count, LockType type)
    : id(id), maxCount(count), initialCount(count), keyPath(keyPathOf(type)) {
  semid = attachToSet(keyPath, id, count);
}

OVNSemaphoreLock::~OVNSemaphoreLock() {
  if (semid == -1) return;
  const platform::PathLock oneAtATime(keyPath);
  const SemaphoreSet set(semid);
  if (set.change(attached, -1, SEM_UNDO | IPC_NOWAIT) && set.value(attached) == 0) set.remove();
}

bool OVNSemaphoreLock::AcquireLock() {
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(freeSlots, -1, SEM_UNDO | IPC_NOWAIT)) return false;
  locked = true;
  return true;
}

bool OVNSemaphoreLock::isLocked() {
  return semid != -1 && SemaphoreSet(semid).value(freeSlots) < maxCount;
}

bool OVNSemaphoreLock::releaseLock() {
  if (!locked) return true;
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(freeSlots, +1, SEM_UNDO)) return false;
  locked = false;
  return true;
}

int OVNSemaphoreLock::getCurrentLockCount() const {
  return semid == -1 ? 0 : SemaphoreSet(semid).value(freeSlots);
}
