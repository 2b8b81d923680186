#include "nativeutils/Files.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "platform/FileKind.h"
#include "platform/PathString.h"
#include "platform/UserFolders.h"

namespace {

constexpr unsigned int unchanged = 0xFFFFFFFF;

// The folders above `path` that are not there, outermost first. Those whose paths the system could not take are left
// out: a path of very many components would need room for each of its prefixes.
std::vector<std::string> missingParents(const std::string& path) {
  std::vector<std::string> missing;
  std::string child = path;
  std::string parent = platform::parentFolder(child);
  // "/" and "." are their own parents, and even they can be out of sight.
  while (parent != child && !platform::isSomethingAt(parent)) {
    if (errno != ENAMETOOLONG) missing.insert(missing.begin(), parent);
    child = std::move(parent);
    parent = platform::parentFolder(child);
  }
  return missing;
}

// What another process creates meanwhile counts too.
bool makeFolderIfMissing(const std::string& path, mode_t mode) {
  return platform::isSomethingAt(path) || ::mkdir(path.c_str(), mode) == 0 || errno == EEXIST;
}

// `path` or the nearest of its parents at which something exists; "" when there is none.
std::string nearestExisting(const std::string& path) {
  if (platform::kindOf(path) != platform::FileKind::none) return path;

  std::string parent = platform::deletingLastPathComponent(path);
  while (platform::kindOf(parent) == platform::FileKind::none) {
    if (parent.size() <= 1) return "";
    // Cut where it stands: copying each parent of a path of very many components would take minutes.
    const std::size_t slash = parent.rfind('/');
    parent.resize(slash == std::string::npos ? 0 : slash == 0 ? 1 : slash);
  }
  return parent;
}

}  // namespace

bool utilCreateDirectoryPath(const std::string& path, bool /*unused*/) {
  constexpr unsigned short defaultMode = 0775;
  return utilCreateDirectoryPathWithAttributes(path.c_str(), unchanged, unchanged, defaultMode);
}

bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode) {
  if (path == nullptr) return false;

  for (const std::string& parent : missingParents(path))
    (void)makeFolderIfMissing(parent, mode);  // whether it is missed, the folder itself will tell
  if (!makeFolderIfMissing(path, mode)) return false;
  if (owner == unchanged || group == unchanged) return true;
  return ::chown(path, owner, group) == 0 && ::chmod(path, mode) == 0;
}

bool utilFileExitsAtPath(const std::string& path) {
  return platform::kindOf(path) == platform::FileKind::other;
}

bool utilFolderExitsAtPath(const std::string& path) {
  return platform::kindOf(path) == platform::FileKind::folder;
}

bool utilIsCreatableWritablePath(const char* path, std::string& existingPath) {
  if (path == nullptr) return false;

  const std::string nearest = nearestExisting(platform::expandingTilde(path));
  if (::access(nearest.c_str(), R_OK | W_OK | X_OK) != 0) return false;
  existingPath = nearest;
  return true;
}
