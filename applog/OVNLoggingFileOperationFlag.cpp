#include "applog/OVNLoggingFileOperationFlag.h"

#include <string>

#include "applog/LogFlagNumbers.h"
#include "platform/PathLock.h"
#include "platform/Users.h"

bool OVNLoggingFileOperationFlag::createFlag() {
  const std::string home = platform::homeFolderOfConsoleUser();
  return create(home.c_str(), fileOperationFlagNumber);
}

bool OVNLoggingFileOperationFlag::finalizeFlag() {
  const std::string home = platform::homeFolderOfConsoleUser();
  const platform::PathLock oneAtATime(home);
  return finalize();
}

bool OVNLoggingFileOperationFlag::startFileOperation() {
  return tryWait();
}

bool OVNLoggingFileOperationFlag::endFileOperation() {
  return release();
}
