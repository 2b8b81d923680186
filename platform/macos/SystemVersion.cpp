#include "platform/SystemVersion.h"

#include <CoreServices/CoreServices.h>

namespace platform {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
std::optional<int> systemVersionPart(VersionPart part) {
  const OSType selector = part == VersionPart::major   ? gestaltSystemVersionMajor
                          : part == VersionPart::minor ? gestaltSystemVersionMinor
                                                       : gestaltSystemVersionBugFix;
  SInt32 number = 0;
  if (Gestalt(selector, &number) != noErr) return std::nullopt;
  return number;
}
#pragma GCC diagnostic pop

std::optional<SystemVersion> systemVersion() {
  const std::optional<int> major = systemVersionPart(VersionPart::major);
  if (!major) return std::nullopt;
  const std::optional<int> minor = systemVersionPart(VersionPart::minor);
  if (!minor) return std::nullopt;
  const std::optional<int> bugFix = systemVersionPart(VersionPart::bugFix);
  if (!bugFix) return std::nullopt;
  return SystemVersion{*major, *minor, *bugFix};
}

}  // namespace platform
