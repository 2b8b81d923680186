#include "platform/UserFolders.h"

#include <string>

#include "platform/macos/FolderFinder.h"

namespace platform {

std::string homeFolder() {
  return folderOf(kUserDomain, kVolumeRootFolderType).path;
}

}  // namespace platform
