#include "platform/FileKind.h"

#include <sys/stat.h>

namespace platform {

FileKind kindOf(const std::string& path) {
  struct stat object {};
  if (::stat(path.c_str(), &object) != 0) return FileKind::none;
  return S_ISDIR(object.st_mode) ? FileKind::folder : FileKind::other;
}

bool isSomethingAt(const std::string& path) {
  struct stat object {};
  return ::lstat(path.c_str(), &object) == 0;
}

}  // namespace platform
