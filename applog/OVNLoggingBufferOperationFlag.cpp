#include "applog/OVNLoggingBufferOperationFlag.h"

#include <unistd.h>

#include <string>

#include "applog/LogFlagNumbers.h"
#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"
#include "platform/Users.h"

bool OVNLoggingBufferOperationFlag::createFlag() {
  using platform::SemaphoreSet;
  const std::string home = platform::homeFolderOfConsoleUser();
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
  const std::string home = platform::homeFolderOfConsoleUser();
  const platform::PathLock oneAtATime(home);
  return finalize();
}

bool OVNLoggingBufferOperationFlag::startBufferOperation() {
  return tryWait();
}

bool OVNLoggingBufferOperationFlag::endBufferOperation() {
  return release();
}
