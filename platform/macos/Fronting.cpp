#include <ApplicationServices/ApplicationServices.h>

#include "platform/Applications.h"

namespace platform {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

Fronting bringToFront(pid_t process) {
  ProcessSerialNumber number = {};
  if (GetProcessForPID(process, &number) != noErr) return Fronting::unknown;
  return SetFrontProcess(&number) == noErr ? Fronting::done : Fronting::impossible;
}

#pragma GCC diagnostic pop

}  // namespace platform
