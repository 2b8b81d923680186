#include "platform/SystemVersion.h"

#include <charconv>

namespace platform {

std::optional<SystemVersion> systemVersionOfRelease(std::string_view release) {
  SystemVersion version;
  const char* next = release.data();
  const char* const end = next + release.size();
  for (int* number : {&version.major, &version.minor, &version.bugFix}) {
    const auto [rest, error] = std::from_chars(next, end, *number);
    if (error != std::errc()) return number == &version.major ? std::nullopt : std::optional(version);
    if (rest == end || *rest != '.') return version;
    next = rest + 1;
  }
  return version;
}

}  // namespace platform
