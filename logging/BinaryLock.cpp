#include "logging/BinaryLock.h"

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
  if (identifier != 0) finalize();
}

bool BinaryLock::create(const std::string& path, int projectId) {
  if (identifier != closed) return true;
  const key_t key = SemaphoreSet::keyFor(path, projectId);
  if (key == -1) return false;

  const auto initialize = [](const SemaphoreSet& set) { return set.setValue(kMutex, 1); };
  const auto countCaller = [](const SemaphoreSet& set) { return set.change(kReferences, +1, IPC_NOWAIT); };
  if (SemaphoreSet::attach(path, key, {kMembers, initialize, countCaller}, identifier)) return true;
  identifier = closed;
  return false;
}

bool BinaryLock::wait() {
  return SemaphoreSet(identifier).take(kMutex);
}

bool BinaryLock::signal() {
  return SemaphoreSet(identifier).change(kMutex, -1, SEM_UNDO | IPC_NOWAIT);
}

bool BinaryLock::release() {
  return SemaphoreSet(identifier).change(kMutex, +1, SEM_UNDO);
}

bool BinaryLock::finalize() {
  if (identifier == closed) return true;
  const SemaphoreSet set(std::exchange(identifier, closed));
  if (!set.change(kReferences, -1, IPC_NOWAIT)) return false;
  return set.value(kReferences) != 0 || set.remove();
}

int BinaryLock::getReferenceCount() const {
  return identifier == closed ? -1 : SemaphoreSet(identifier).value(kReferences);
}

}  // namespace tarn
