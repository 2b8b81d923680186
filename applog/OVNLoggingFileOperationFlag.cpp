#include "applog/OVNLoggingFileOperationFlag.h"

#include <string>

#include "applog/LogFlagNumbers.h"
#include "nativeutils/UserFolder.h"
#include "platform/PathLock.h"

bool OVNLoggingFileOperationFlag::createFlag() {
  std::string home;
  utilGetUserFolderPath(home);
  return create(home.c_str(), fileOperationFlagNumber);
}

bool OVNLoggingFileOperationFlag::finalizeFlag() {
  std::string home;
  utilGetUserFolderPath(home);
  const platform::PathLock oneAtATime(home);
  return finalize();
}

bool OVNLoggingFileOperationFlag::startFileOperation() {
  return tryWait();
}

bool OVNLoggingFileOperationFlag::endFileOperation() {
  return release();
}
