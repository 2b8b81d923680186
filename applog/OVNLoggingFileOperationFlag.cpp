#include "applog/OVNLoggingFileOperationFlag.h"

#include <cerrno>

#include "platform/SemaphoreSet.h"

bool OVNLoggingFileOperationFlag::createFlag() {
  return create(keyPath().c_str(), kFileOperationNumber);
}

bool OVNLoggingFileOperationFlag::startFileOperation() {
  if (tryWait()) return true;
  if (semid == -1 || !platform::SemaphoreSet::wasRemoved(errno)) return false;
  const bool stillExists = getCount() != -1;
  return (stillExists || createAgain()) && tryWait();
}

bool OVNLoggingFileOperationFlag::createAgain() {
  semid = -1;
  held = false;
  return createFlag();
}

bool OVNLoggingFileOperationFlag::endFileOperation() {
  return release();
}
