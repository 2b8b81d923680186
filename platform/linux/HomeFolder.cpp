#include <unistd.h>

#include <string>

#include "platform/PasswordEntry.h"
#include "platform/UserFolders.h"

namespace platform {

std::string homeFolder() {
  return homeFolderBy([](auto... rest) { return ::getpwuid_r(::geteuid(), rest...); });
}

}  // namespace platform
