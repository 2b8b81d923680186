#include "applog/OVNLoggingBufferOperationFlag.h"

#include <unistd.h>

#include <string>

#include "platform/SemaphoreSet.h"
#include "platform/Users.h"

bool OVNLoggingBufferOperationFlag::createFlag() {
  using platform::SemaphoreSet;
  const std::string path = keyPath();
  const key_t fileOperationKey = SemaphoreSet::keyFor(path, kFileOperationNumber);
  const key_t reservedKey = SemaphoreSet::keyFor(path, kReservedNumber);
  // Without a home folder every key is -1, and the loop below would not end.
  if (fileOperationKey == -1) return false;

  const auto isTaken = [&](key_t key) { return key == fileOperationKey || key == reservedKey; };
  int number = ::getpid();
  while (isTaken(SemaphoreSet::keyFor(path, number)))
    ++number;
  return create(path.c_str(), number);
}

bool OVNLoggingBufferOperationFlag::startBufferOperation() {
  return tryWait();
}

bool OVNLoggingBufferOperationFlag::endBufferOperation() {
  return release();
}
