// Stands in for the system's answers about folders, its version, the program's bundle and volumes; a test that links
// FakeSystem.cpp decides them.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/Machine.h"
#include "platform/Users.h"

namespace nativeutils_test {

struct FakeSystem {
  platform::FolderSearch folder;
  std::optional<platform::VersionPart> untold;  // every other part is 7
  std::string bundle;
  std::string executable;
  std::vector<platform::Architecture> architectures;
  std::optional<std::string> mountPoint;
  std::optional<std::string> volumeName;
};

inline FakeSystem fakeSystem;

}  // namespace nativeutils_test
