#include "platform/FileKind.h"

#include <sys/stat.h>

#include "platform/PathString.h"

namespace platform {
namespace {

bool isSame(const struct stat& object, const struct stat& other) {
  return object.st_dev == other.st_dev && object.st_ino == other.st_ino;
}

}  // namespace

FileKind kindOf(const std::string& path) {
  struct stat object {};
  if (::stat(path.c_str(), &object) != 0) return FileKind::none;
  return S_ISDIR(object.st_mode) ? FileKind::folder : FileKind::other;
}

bool isSomethingAt(const std::string& path) {
  struct stat object {};
  return ::lstat(path.c_str(), &object) == 0;
}

bool isSameEntry(const std::string& path, const std::string& other) {
  if (lastPathComponent(path) != lastPathComponent(other)) return false;
  struct stat folder {};
  struct stat otherFolder {};
  return ::stat(parentFolder(path).c_str(), &folder) == 0 && ::stat(parentFolder(other).c_str(), &otherFolder) == 0 &&
         isSame(folder, otherFolder);
}

bool isLinkTo(const std::string& path, const std::string& other) {
  struct stat link {};
  struct stat reached {};
  struct stat object {};
  return ::lstat(path.c_str(), &link) == 0 && S_ISLNK(link.st_mode) && ::stat(path.c_str(), &reached) == 0 &&
         ::lstat(other.c_str(), &object) == 0 && isSame(reached, object);
}

}  // namespace platform
