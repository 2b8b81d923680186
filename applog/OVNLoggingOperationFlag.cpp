#include "applog/OVNLoggingOperationFlag.h"

#include "nativeutils/UserFolder.h"
#include "platform/PathLock.h"

bool OVNLoggingOperationFlag::finalizeFlag() {
  const platform::PathLock lock(keyPath());
  return finalize();
}

std::string OVNLoggingOperationFlag::keyPath() {
  std::string home;
  utilGetUserFolderPath(home);
  return home;
}
