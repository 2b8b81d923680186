#include "applog/OVNLoggingOperationFlag.h"

#include <string>

#include "platform/PathLock.h"
#include "platform/Users.h"

bool OVNLoggingOperationFlag::finalizeFlag() {
  const platform::PathLock lock(keyPath());
  return finalize();
}

std::string OVNLoggingOperationFlag::keyPath() {
  return platform::homeFolderOfConsoleUser();
}
