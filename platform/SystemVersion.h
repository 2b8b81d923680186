// The version of the running system.

#pragma once

#include <optional>
#include <string_view>

namespace platform {

struct SystemVersion {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
};

// Nothing when the system does not tell. macOS is asked number by number, up to the first that it does not tell.
std::optional<SystemVersion> systemVersion();

enum class VersionPart { major, minor, bugFix };

// One number of it alone, for systems that are asked for each; nothing when the system does not tell.
std::optional<int> systemVersionPart(VersionPart part);

// Reads the numbers that a release begins with. A missing one counts as 0, and so do those behind it; one that is too
// large is missing.
//   "6.1.0-18-amd64" => 6, 1, 0    "6.18-rc2" => 6, 18, 0    "6.-2" => 6, 0, 0    "next" => nothing
std::optional<SystemVersion> systemVersionOfRelease(std::string_view release);

}  // namespace platform
