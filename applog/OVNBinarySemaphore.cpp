#include "applog/OVNBinarySemaphore.h"

#include <cerrno>

#include "platform/SemaphoreSet.h"

namespace {

using platform::SemaphoreSet;

constexpr int kMembers = 2;
constexpr int kAttached = 0;
constexpr int kMutex = 1;

}  // namespace

bool OVNBinarySemaphore::create(const char* path, int projectNumber) {
  if (semid != -1) return true;
  if (path == nullptr) return false;
  const key_t key = SemaphoreSet::keyFor(path, projectNumber);
  if (key == -1) return false;

  bool isInitialized = true;
  const auto initialize = [&](const SemaphoreSet& set) {
    isInitialized = set.change(kMutex, +1, IPC_NOWAIT);
    return isInitialized;
  };
  const auto countCaller = [](const SemaphoreSet& set) { return set.change(kAttached, +1, SEM_UNDO); };
  SemaphoreSet::AttachSteps steps{kMembers, initialize, countCaller};
  steps.mutex = kMutex;
  if (SemaphoreSet::attach(path, key, steps, semid)) return true;
  // `finalize` must not detach an object that was not counted. A set with too many users is used without the count.
  if (isInitialized && errno != ERANGE) semid = -1;
  return false;
}

bool OVNBinarySemaphore::finalize() {
  if (semid == -1) return true;
  const SemaphoreSet set(semid);
  if (!set.detach(kAttached)) return false;
  if (set.value(kAttached) == 0 && !set.remove()) return false;
  semid = -1;
  return true;
}

int OVNBinarySemaphore::getCount() const {
  return SemaphoreSet(semid).value(kMutex);
}

bool OVNBinarySemaphore::tryWait() {
  if (!SemaphoreSet(semid).take(kMutex)) return false;
  held = true;
  return true;
}

bool OVNBinarySemaphore::signal() {
  if (!SemaphoreSet(semid).change(kMutex, -1, SEM_UNDO | IPC_NOWAIT)) return false;
  held = true;
  return true;
}

bool OVNBinarySemaphore::release() {
  if (!held) return true;
  held = false;
  if (SemaphoreSet(semid).release(kMutex)) return true;
  held = true;
  return false;
}
