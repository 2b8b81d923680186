#include "applog/OVNSystemLevelDeploymentLock.h"

#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"

namespace {

using platform::SemaphoreSet;

constexpr char keyPath[] = "/tmp";
constexpr int members = 1;
constexpr int mutex = 0;
constexpr int permissions = 0666;

// The set is there but for the first time on a machine, and whoever is not its maker need not wait for a turn.
int findOrMakeSet(int id) {
  const key_t key = SemaphoreSet::keyFor(keyPath, id);
  const int standing = SemaphoreSet::find(key, members, permissions);
  if (standing != -1) return standing;

  const platform::PathLock oneAtATime(keyPath);
  const int found = SemaphoreSet::find(key, members, permissions);
  if (found != -1) return found;
  const int made = SemaphoreSet::create(key, members);
  return made != -1 && SemaphoreSet(made).setValue(mutex, 1) ? made : -1;
}

}  // namespace

OVNSystemLevelDeploymentLock::~OVNSystemLevelDeploymentLock() {
  OVNSystemLevelDeploymentLock::releaseLock();
}

bool OVNSystemLevelDeploymentLock::AcquireLock() {
  if (locked) return true;
  semid = findOrMakeSet(id);
  if (semid == -1) return false;
  locked = SemaphoreSet(semid).change(mutex, -1, SEM_UNDO | IPC_NOWAIT);
  return locked;
}

bool OVNSystemLevelDeploymentLock::isLocked() {
  if (!AcquireLock()) return true;
  releaseLock();
  return false;
}

bool OVNSystemLevelDeploymentLock::isLocked2() const {
  const int found = SemaphoreSet::find(SemaphoreSet::keyFor(keyPath, id));
  return found != -1 && SemaphoreSet(found).value(mutex) == 0;
}

bool OVNSystemLevelDeploymentLock::waitUntilReleased() {
  semid = SemaphoreSet::find(SemaphoreSet::keyFor(keyPath, id), members, permissions);
  if (semid == -1) return true;
  const SemaphoreSet set(semid);
  return set.change(mutex, -1, SEM_UNDO) && set.change(mutex, +1, SEM_UNDO);
}

bool OVNSystemLevelDeploymentLock::releaseLock() {
  if (!locked) return true;
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(mutex, +1, SEM_UNDO)) return false;
  semid = -1;
  locked = false;
  return true;
}
