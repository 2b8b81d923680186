#include "logging/BinaryLock.h"

#include <cerrno>
#include <utility>

#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"

namespace tarn {
namespace {

using platform::SemaphoreSet;

constexpr int members = 2;
constexpr int references = 0;
constexpr int mutex = 1;

int findOrMakeSet(key_t key) {
  const int found = SemaphoreSet::find(key);
  if (found != -1) return found;
  const int made = SemaphoreSet::create(key, members);
  return made != -1 && SemaphoreSet(made).setValue(mutex, 1) ? made : -1;
}

}  // namespace

BinaryLock::~BinaryLock() {
  if (identifier != 0) finalize();
}

bool BinaryLock::create(const std::string& path, int projectId) {
  if (identifier != closed) return true;
  const key_t key = SemaphoreSet::keyFor(path, projectId);
  if (key == -1) return false;

  const platform::PathLock oneAtATime(path);
  for (int tries = 0; tries < 3; ++tries) {
    identifier = findOrMakeSet(key);
    if (identifier == closed || attach()) break;
    identifier = closed;
    if (!SemaphoreSet::wasRemoved(errno)) break;
  }
  return identifier != closed;
}

bool BinaryLock::attach() {
  return SemaphoreSet(identifier).change(references, +1, IPC_NOWAIT);
}

bool BinaryLock::wait() {
  return SemaphoreSet(identifier).take(mutex);
}

bool BinaryLock::signal() {
  return SemaphoreSet(identifier).change(mutex, -1, SEM_UNDO | IPC_NOWAIT);
}

bool BinaryLock::release() {
  return SemaphoreSet(identifier).change(mutex, +1, SEM_UNDO);
}

bool BinaryLock::finalize() {
  if (identifier == closed) return true;
  const SemaphoreSet set(std::exchange(identifier, closed));
  if (!set.change(references, -1, IPC_NOWAIT)) return false;
  return set.value(references) != 0 || set.remove();
}

int BinaryLock::getReferenceCount() const {
  return identifier == closed ? -1 : SemaphoreSet(identifier).value(references);
}

}  // namespace tarn
