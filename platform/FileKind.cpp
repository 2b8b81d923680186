#include "platform/FileKind.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/FileTree.h"
#include "platform/Path.h"

namespace platform {
namespace {

// Whether a symbolic link to `target` at `path` would refer to itself.
bool wouldLoop(std::string target, const std::string& path) {
  constexpr int kMaxLinks = 40;  // the limit of the system
  std::string folder = parentFolder(path);
  for (int links = 0; links < kMaxLinks; ++links) {
    const bool absolute = target.rfind('/', 0) == 0;
    const std::string next = absolute ? target : std::string(folder).append("/").append(target);
    if (isSameEntry(next, path)) return true;
    std::optional<std::string> nextTarget = linkTarget(next);
    if (!nextTarget) return false;
    target = std::move(*nextTarget);
    folder = parentFolder(next);
  }
  return false;
}

bool isSameFolder(const std::string& path, const std::string& other) {
  struct stat folder {};
  struct stat otherFolder {};
  return ::stat(path.c_str(), &folder) == 0 && ::stat(other.c_str(), &otherFolder) == 0 && isSame(folder, otherFolder);
}

// Whether the folder lists the name of `path`. A folder that is not case-sensitive finds other spellings, but does not
// list them.
bool isListed(const std::string& folder, const std::string& path) {
  const std::vector<FolderEntry> entries = entriesOf(folder);
  return std::any_of(entries.begin(), entries.end(),
                     [name = baseName(path)](const FolderEntry& entry) { return entry.name == name; });
}

}  // namespace

bool isSame(const struct stat& object, const struct stat& other) {
  return object.st_dev == other.st_dev && object.st_ino == other.st_ino;
}

FileKind kindOf(const std::string& path) {
  struct stat object {};
  if (::stat(path.c_str(), &object) != 0) return FileKind::kNone;
  return S_ISDIR(object.st_mode) ? FileKind::kFolder : FileKind::kOther;
}

bool exists(const std::string& path) {
  struct stat object {};
  return ::lstat(path.c_str(), &object) == 0;
}

bool isSameEntry(const std::string& path, const std::string& other) {
  return baseName(path) == baseName(other) && isSameFolder(parentFolder(path), parentFolder(other));
}

bool isRemovedWith(const std::string& path, const std::string& other) {
  struct stat object {};
  struct stat otherObject {};
  if (::lstat(path.c_str(), &object) != 0 || ::lstat(other.c_str(), &otherObject) != 0) return false;
  if (!isSame(object, otherObject)) return false;
  if (S_ISDIR(object.st_mode) || isSameEntry(path, other)) return true;
  const std::string folder = parentFolder(path);
  return isSameFolder(folder, parentFolder(other)) && !(isListed(folder, path) && isListed(folder, other));
}

std::optional<std::string> linkTarget(const std::string& path) {
  std::string target(PATH_MAX, '\0');
  const ssize_t length = ::readlink(path.c_str(), target.data(), target.size());
  if (length < 0) return std::nullopt;
  target.resize(static_cast<std::size_t>(length));
  return target;
}

bool isLinkTo(const std::string& path, const std::string& other) {
  const std::optional<std::string> target = linkTarget(path);
  if (!target) return false;
  struct stat followed {};
  struct stat object {};
  const bool bothExist = ::stat(path.c_str(), &followed) == 0 && ::lstat(other.c_str(), &object) == 0;
  return (bothExist && isSame(followed, object)) || wouldLoop(*target, other);
}

}  // namespace platform
