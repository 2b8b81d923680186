#include "tests/macos/doubles/ConsoleUser.h"

#include <SystemConfiguration/SystemConfiguration.h>

#include "tests/macos/doubles/CoreFoundation.h"
#include "tests/macos/doubles/SystemCalls.h"

CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef, uid_t* uid, gid_t*) {
  doubles::noteCall("SCDynamicStoreCopyConsoleUser");
  if (!doubles::consoleUser) return nullptr;
  if (uid != nullptr) *uid = doubles::consoleUser->id;
  return doubles::newString(doubles::consoleUser->name);
}
