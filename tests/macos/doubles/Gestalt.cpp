// The machine: a macOS 10.15.7.

#include <CoreServices/CoreServices.h>

#include <string>

#include "tests/macos/doubles/SystemCalls.h"

namespace {

OSErr answer(const std::string& question, SInt32 number, SInt32* response) {
  doubles::noteCall(question);
  if (const int status = doubles::statusOf(question)) return static_cast<OSErr>(status);
  *response = number;
  return noErr;
}

}  // namespace

OSErr Gestalt(OSType selector, SInt32* response) {
  switch (selector) {
    case gestaltSystemVersionMajor:
      return answer("Gestalt sys1", 10, response);
    case gestaltSystemVersionMinor:
      return answer("Gestalt sys2", 15, response);
    case gestaltSystemVersionBugFix:
      return answer("Gestalt sys3", 7, response);
    default:
      return gestaltUndefSelectorErr;
  }
}
