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

// Whether a link of this text at `place` leads back to `place`.
bool wouldComeBack(std::string text, const std::string& place) {
  constexpr int mostLinks = 40;  // the system follows no more
  std::string folder = parentFolder(place);
  for (int links = 0; links < mostLinks; ++links) {
    const bool absolute = text.rfind('/', 0) == 0;
    const std::string next = absolute ? text : std::string(folder).append("/").append(text);
    if (isSameEntry(next, place)) return true;
    std::optional<std::string> onward = textOfLink(next);
    if (!onward) return false;
    text = std::move(*onward);
    folder = parentFolder(next);
  }
  return false;
}

bool isSameFolder(const std::string& path, const std::string& other) {
  struct stat folder {};
  struct stat otherFolder {};
  return ::stat(path.c_str(), &folder) == 0 && ::stat(other.c_str(), &otherFolder) == 0 && isSame(folder, otherFolder);
}

// Whether the folder lists the name of `path`. Where it is not case-sensitive, it finds other spellings without listing
// them.
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
  if (::stat(path.c_str(), &object) != 0) return FileKind::none;
  return S_ISDIR(object.st_mode) ? FileKind::folder : FileKind::other;
}

bool isSomethingAt(const std::string& path) {
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

std::optional<std::string> textOfLink(const std::string& path) {
  std::string text(PATH_MAX, '\0');
  const ssize_t length = ::readlink(path.c_str(), text.data(), text.size());
  if (length < 0) return std::nullopt;
  text.resize(static_cast<std::size_t>(length));
  return text;
}

bool isLinkTo(const std::string& path, const std::string& other) {
  const std::optional<std::string> text = textOfLink(path);
  if (!text) return false;
  struct stat reached {};
  struct stat object {};
  const bool leadsThere = ::stat(path.c_str(), &reached) == 0 && ::lstat(other.c_str(), &object) == 0;
  return (leadsThere && isSame(reached, object)) || wouldComeBack(*text, other);
}

}  // namespace platform
