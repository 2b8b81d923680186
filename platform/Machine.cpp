#include "platform/Machine.h"

#include <cctype>
#include <charconv>

namespace platform {

std::optional<SystemVersion> systemVersionOfRelease(std::string_view release) {
  SystemVersion version;
  const char* next = release.data();
  const char* const end = next + release.size();
  for (int* number : {&version.major, &version.minor, &version.bugFix}) {
    // `from_chars` accepts a minus sign, which is not part of a version.
    const bool isNumber = next != end && std::isdigit(static_cast<unsigned char>(*next)) != 0;
    const auto [rest, error] = std::from_chars(next, isNumber ? end : next, *number);
    if (error != std::errc()) return number == &version.major ? std::nullopt : std::optional(version);
    if (rest == end || *rest != '.') return version;
    next = rest + 1;
  }
  return version;
}

}  // namespace platform
