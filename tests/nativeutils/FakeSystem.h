// Replaces the results of platform/ for folders, the system's version, the program's bundle, and volumes. Requires
// FakeSystem.cpp.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Machine.h"
#include "platform/Users.h"

namespace nativeutils_test {

struct FakeSystem {
  platform::FolderSearch folder;
  std::optional<platform::VersionPart> unknownPart;  // the other parts are 7
  std::string bundle;
  std::string executable;
  std::vector<platform::Architecture> architectures;
  std::optional<std::string> mountPoint;
  std::optional<std::string> volumeName;
};

inline FakeSystem fakeSystem;

}  // namespace nativeutils_test
