#include "applog/OVNBinarySemaphore.h"

#include <cerrno>

#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"

namespace {

using platform::SemaphoreSet;

constexpr int members = 2;
constexpr int attached = 0;
constexpr int mutex = 1;

// False when a set was made whose mutex could not be freed; `semid` names it all the same.
bool findOrMakeSet(key_t key, int& semid) {
  semid = SemaphoreSet::find(key);
  if (semid != -1) return true;
  semid = SemaphoreSet::create(key, members);
  return semid != -1 && SemaphoreSet(semid).change(mutex, +1, IPC_NOWAIT);
}

}  // namespace

bool OVNBinarySemaphore::create(const char* path, int projectNumber) {
  if (semid != -1) return true;
  if (path == nullptr) return false;
  const key_t key = SemaphoreSet::keyFor(path, projectNumber);
  if (key == -1) return false;

  const platform::PathLock oneAtATime(path);
  for (int tries = 0; tries < 3; ++tries) {
    if (!findOrMakeSet(key, semid)) return false;
    if (SemaphoreSet(semid).change(attached, +1, SEM_UNDO)) return true;
    if (!SemaphoreSet::wasRemoved(errno)) return false;
  }
  return false;
}

bool OVNBinarySemaphore::finalize() {
  if (semid == -1) return true;
  const SemaphoreSet set(semid);
  if (!set.change(attached, -1, SEM_UNDO)) return false;
  if (set.value(attached) == 0 && !set.remove()) return false;
  semid = -1;
  return true;
}

int OVNBinarySemaphore::getCount() const {
  return SemaphoreSet(semid).value(mutex);
}

bool OVNBinarySemaphore::tryWait() {
  if (!SemaphoreSet(semid).take(mutex)) return false;
  held = true;
  return true;
}

bool OVNBinarySemaphore::signal() {
  if (!SemaphoreSet(semid).change(mutex, -1, SEM_UNDO | IPC_NOWAIT)) return false;
  held = true;
  return true;
}

bool OVNBinarySemaphore::release() {
  if (!held) return true;
  held = false;
  if (SemaphoreSet(semid).change(mutex, +1, SEM_UNDO)) return true;
  held = true;
  return false;
}
