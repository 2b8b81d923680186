#include "logging/BinaryLock.h"

#include <string>
#include <utility>

#include "platform/SemaphoreSet.h"

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
  const key_t key = SemaphoreSet::keyFor(path, projectId);
  if (key == -1) return false;

  const auto initialize = [](const SemaphoreSet& set) { return set.setValue(kMutex, 1); };
  const auto countCaller = [](const SemaphoreSet& set) { return set.change(kReferences, +1, IPC_NOWAIT); };
  if (SemaphoreSet::attach(path, key, {kMembers, initialize, countCaller}, id_)) return true;
  id_ = kClosed;
  return false;
}

bool BinaryLock::wait() {
  return SemaphoreSet(id_).take(kMutex);
}

bool BinaryLock::signal() {
  return SemaphoreSet(id_).change(kMutex, -1, SEM_UNDO | IPC_NOWAIT);
}

bool BinaryLock::release() {
  return SemaphoreSet(id_).change(kMutex, +1, SEM_UNDO);
}

bool BinaryLock::finalize() {
  if (id_ == kClosed) return true;
  const SemaphoreSet set(std::exchange(id_, kClosed));
  if (!set.change(kReferences, -1, IPC_NOWAIT)) return false;
  return set.value(kReferences) != 0 || set.remove();
}

int BinaryLock::getReferenceCount() const {
  return id_ == kClosed ? -1 : SemaphoreSet(id_).value(kReferences);
}

}  // namespace tarn
