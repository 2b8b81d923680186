#include "platform/SystemVersion.h"

#include <sys/utsname.h>

namespace platform {

std::optional<SystemVersion> systemVersion() {
  utsname system{};
  if (::uname(&system) != 0) return std::nullopt;
  return systemVersionOfRelease(system.release);
}

std::optional<int> systemVersionPart(VersionPart part) {
  const std::optional<SystemVersion> version = systemVersion();
  if (!version) return std::nullopt;
  switch (part) {
    case VersionPart::major:
      return version->major;
    case VersionPart::minor:
      return version->minor;
    case VersionPart::bugFix:
      return version->bugFix;
  }
  return std::nullopt;
}

}  // namespace platform
