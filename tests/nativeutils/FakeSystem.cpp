#include "tests/nativeutils/FakeSystem.h"

#include <cerrno>
#include <optional>
#include <string>
#include <vector>

#include "platform/Volumes.h"

using nativeutils_test::fakeSystem;

namespace platform {

FolderSearch findFolder(FolderDomain, FolderKind) {
  return fakeSystem.folder;
}

std::optional<SystemVersion> systemVersion() {
  return SystemVersion{7, 7, 7};
}

std::optional<int> systemVersionPart(VersionPart part) {
  return part == fakeSystem.unknownPart ? std::nullopt : std::optional(7);
}

std::string bundlePath() {
  return fakeSystem.bundle;
}

std::string executablePath() {
  return fakeSystem.executable;
}

std::vector<Architecture> executableArchitectures() {
  return fakeSystem.architectures;
}

std::optional<std::string> mountPointOf(const std::string&) {
  if (!fakeSystem.mountPoint) errno = EACCES;
  return fakeSystem.mountPoint;
}

std::optional<std::string> volumeNameOf(const std::string&) {
  return fakeSystem.volumeName;
}

std::optional<bool> isCaseSensitive(const std::string&) {
  return std::nullopt;
}

}  // namespace platform
