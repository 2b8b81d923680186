// The running program and the system under it: executable and bundle, the version of the system, the number of a
// thread.

#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class Architecture { kX86, kX86_64, kPpc, kPpc64, kOther };

// The folder that holds the running executable, whatever folder it was started from; "" when the system does not tell.
// On macOS an application's is the one whose name ends in ".app".
std::string bundlePath();

// The running executable; "" when the system does not tell. One that has been removed since keeps its path.
std::string executablePath();

// What the running executable's file holds code for, which on macOS may be several; empty when it cannot be read. A
// processor of another family is `other`.
std::vector<Architecture> executableArchitectures();

struct SystemVersion {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
};

// Nothing when the system does not tell. macOS is asked number by number, up to the first that it does not tell.
std::optional<SystemVersion> systemVersion();

enum class VersionPart { kMajor, kMinor, kBugFix };

// One number of it alone, for systems that are asked for each; nothing when the system does not tell.
std::optional<int> systemVersionPart(VersionPart part);

// Reads the numbers that a release begins with. A missing one counts as 0, and so do those behind it; one that is too
// large is missing.
//   "6.1.0-18-amd64" => 6, 1, 0    "6.18-rc2" => 6, 18, 0    "6.-2" => 6, 0, 0    "next" => nothing
std::optional<SystemVersion> systemVersionOfRelease(std::string_view release);

// The number that `ps -T`, on macOS `sample`, and debuggers show. Cheap: asked of the system once a thread, and again
// after a fork.
std::uint64_t currentThreadId();

}  // namespace platform
