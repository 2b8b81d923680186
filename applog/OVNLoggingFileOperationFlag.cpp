#include "applog/OVNLoggingFileOperationFlag.h"

bool OVNLoggingFileOperationFlag::createFlag() {
  return create(keyPath().c_str(), kFileOperationNumber);
}

bool OVNLoggingFileOperationFlag::startFileOperation() {
  return tryWait();
}

bool OVNLoggingFileOperationFlag::endFileOperation() {
  return release();
}
