// The system version, 10.15.7, and thread ids.

#include <CoreServices/CoreServices.h>
#include <pthread.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cstdint>

#include "tests/macos/doubles/SystemDoubles.h"

namespace {

OSErr report(const char* call, SInt32 number, SInt32* response) {
  if (const int status = doubles::statusOf(call)) return static_cast<OSErr>(status);
  *response = number;
  return noErr;
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32* response) {
  switch (selector) {
    case gestaltSystemVersionMajor:
      return report("Gestalt sys1", 10, response);
    case gestaltSystemVersionMinor:
      return report("Gestalt sys2", 15, response);
    case gestaltSystemVersionBugFix:
      return report("Gestalt sys3", 7, response);
    default:
      return gestaltUndefSelectorErr;
  }
}

int pthread_threadid_np(pthread_t, std::uint64_t* id) {
  *id = static_cast<std::uint64_t>(::syscall(SYS_gettid));
  return 0;
}
