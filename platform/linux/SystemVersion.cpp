#include "platform/SystemVersion.h"

#include <sys/utsname.h>

namespace platform {

std::optional<SystemVersion> systemVersion() {
  utsname system{};
  if (::uname(&system) != 0) return std::nullopt;
  return systemVersionOfRelease(system.release);
}

}  // namespace platform
