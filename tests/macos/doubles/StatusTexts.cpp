#include <CoreServices/CoreServices.h>

#include "tests/macos/doubles/SystemCalls.h"

// Those of which the tests know.

const char* GetMacOSStatusErrorString(OSStatus err) {
  if (doubles::statusOf("GetMacOSStatusErrorString") != 0) return nullptr;
  return err == fnfErr ? "fnfErr" : "";
}

const char* GetMacOSStatusCommentString(OSStatus err) {
  if (doubles::statusOf("GetMacOSStatusCommentString") != 0) return nullptr;
  return err == fnfErr ? "File not found" : "";
}
