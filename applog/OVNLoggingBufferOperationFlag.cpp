#include "applog/OVNLoggingBufferOperationFlag.h"

#include <unistd.h>

#include <string>

#include "applog/LogFlagNumbers.h"
#include "nativeutils/UserFolder.h"
#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"

bool OVNLoggingBufferOperationFlag::createFlag() {
  using platform::SemaphoreSet;
  std::string home;
  utilGetUserFolderPath(home);
  const key_t fileFlag = SemaphoreSet::keyFor(home, fileOperationFlagNumber);
  const key_t reserved = SemaphoreSet::keyFor(home, reservedFlagNumber);
  if (fileFlag == -1) return false;

  const auto isTaken = [&](key_t key) { return key == fileFlag || key == reserved; };
  int number = ::getpid();
  while (isTaken(SemaphoreSet::keyFor(home, number)))
    ++number;
  return create(home.c_str(), number);
}

bool OVNLoggingBufferOperationFlag::finalizeFlag() {
  std::string home;
  utilGetUserFolderPath(home);
  const platform::PathLock oneAtATime(home);
  return finalize();
}

bool OVNLoggingBufferOperationFlag::startBufferOperation() {
  return tryWait();
}

bool OVNLoggingBufferOperationFlag::endBufferOperation() {
  return release();
}
