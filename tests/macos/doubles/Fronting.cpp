#include <ApplicationServices/ApplicationServices.h>

#include <string>

#include "tests/macos/doubles/SystemCalls.h"

// Every process counts as an application with windows, and its number is that of its process. So does one that has
// ended: how soon a program ends must not decide a test.

OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber* psn) {
  doubles::noteCall("GetProcessForPID " + std::to_string(pid));
  if (const int status = doubles::statusOf("GetProcessForPID")) return status;
  *psn = {0, static_cast<UInt32>(pid)};
  return noErr;
}

OSErr SetFrontProcess(const ProcessSerialNumber* pPSN) {
  doubles::noteCall("SetFrontProcess " + std::to_string(pPSN->highLongOfPSN) + "," +
                    std::to_string(pPSN->lowLongOfPSN));
  return static_cast<OSErr>(doubles::statusOf("SetFrontProcess"));
}
