// The running program and its system: executable, bundle, system version, process and thread number.

#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class Architecture { kX86, kX64, kPpc, kPpc64, kOther };

// Returns the folder of the running executable, or on macOS the ".app" folder of an application; "" if it is unknown.
// Does not depend on the working folder.
std::string bundlePath();

// Returns the path of the running executable, even after the file was removed; "" if it is unknown.
std::string executablePath();

// Returns the architectures in the running executable's file, several on macOS; empty if the file is unreadable.
std::vector<Architecture> executableArchitectures();

struct SystemVersion {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
};

// Returns no value if the version is unknown. macOS: queries each number and stops at the first failure.
std::optional<SystemVersion> systemVersion();

enum class VersionPart { kMajor, kMinor, kBugFix };

// Returns one number of the version; no value if it is unknown.
std::optional<int> systemVersionPart(VersionPart part);

// Parses the numbers at the start of a release. A missing number and those after it are 0; a number that overflows is
// missing.
//   "6.1.0-18-amd64" => 6, 1, 0    "6.18-rc2" => 6, 18, 0    "6.-2" => 6, 0, 0    "next" => no value
std::optional<SystemVersion> systemVersionOfRelease(std::string_view release);

// Returns the thread number that `ps -T`, on macOS `sample`, and debuggers show. Cached per thread; valid after a fork.
std::uint64_t currentThreadId();

// Returns the result of `getpid`. Cached; valid after a fork.
pid_t currentProcessId();

}  // namespace platform
