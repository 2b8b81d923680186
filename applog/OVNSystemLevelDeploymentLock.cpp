#include "applog/OVNSystemLevelDeploymentLock.h"

#include "platform/SemaphoreSet.h"

namespace {

using platform::SemaphoreSet;

constexpr char kKeyPath[] = "/tmp";
constexpr int kMembers = 1;
constexpr int kMutex = 0;
constexpr int kPermissions = 0666;

int findOrCreateSet(int id) {
  const key_t key = SemaphoreSet::keyFor(kKeyPath, id);
  int set = SemaphoreSet::find(key, kMembers, kPermissions);
  // Only the creation of the set needs the lock that `attach` holds: nothing removes the set.
  if (set != -1) return set;
  const auto initialize = [](const SemaphoreSet& created) { return created.setValue(kMutex, 1); };
  return SemaphoreSet::attach(kKeyPath, key, {kMembers, initialize, nullptr, kMembers, kPermissions}, set) ? set : -1;
}

}  // namespace

OVNSystemLevelDeploymentLock::~OVNSystemLevelDeploymentLock() {
  OVNSystemLevelDeploymentLock::releaseLock();
}

bool OVNSystemLevelDeploymentLock::AcquireLock() {
  if (locked) return true;
  semid = findOrCreateSet(id);
  if (semid == -1) return false;
  locked = SemaphoreSet(semid).change(kMutex, -1, SEM_UNDO | IPC_NOWAIT);
  return locked;
}

bool OVNSystemLevelDeploymentLock::isLocked() {
  if (!AcquireLock()) return true;
  releaseLock();
  return false;
}

bool OVNSystemLevelDeploymentLock::isLocked2() const {
  const int found = SemaphoreSet::find(SemaphoreSet::keyFor(kKeyPath, id));
  return found != -1 && SemaphoreSet(found).value(kMutex) == 0;
}

bool OVNSystemLevelDeploymentLock::waitUntilReleased() {
  semid = SemaphoreSet::find(SemaphoreSet::keyFor(kKeyPath, id), kMembers, kPermissions);
  if (semid == -1) return true;
  const SemaphoreSet set(semid);
  return set.change(kMutex, -1, SEM_UNDO) && set.change(kMutex, +1, SEM_UNDO);
}

bool OVNSystemLevelDeploymentLock::releaseLock() {
  if (!locked) return true;
  if (semid == -1) return false;
  if (!SemaphoreSet(semid).change(kMutex, +1, SEM_UNDO)) return false;
  semid = -1;
  locked = false;
  return true;
}
