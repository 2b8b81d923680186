#include "nativeutils/Files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "platform/EventLoop.h"
#include "platform/Failure.h"
#include "platform/FileCopy.h"
#include "platform/FileKind.h"
#include "platform/FileTree.h"
#include "platform/Path.h"
#include "platform/TreeRemoval.h"
#include "platform/Users.h"

namespace {

using nativeutils::kComponent;

constexpr unsigned int kUnchanged = 0xFFFFFFFF;

bool isEmpty(const std::string& path) {
  return platform::untilNul(path).empty();
}

// The missing parents of `path`, outermost first, without those whose paths are too long. The caller creates them one
// by one and ignores their errors, so the rules differ from those of `createFolders` (platform/linux/Users.cpp) and
// `tarn::createDirectoryPath`, which stop at the first error.
std::vector<std::string> missingParents(const std::string& path) {
  std::vector<std::string> missing;
  std::string child = path.substr(0, PATH_MAX + 1);
  std::string parent = platform::parentFolder(child);
  // "/" and "." are their own parents; even these may be unreadable.
  while (parent != child && !platform::exists(parent)) {
    if (errno != ENAMETOOLONG) missing.insert(missing.begin(), parent);
    child = std::move(parent);
    parent = platform::parentFolder(child);
  }
  return missing;
}

bool createFolderIfMissing(const std::string& path, mode_t mode) {
  if (platform::exists(path) || ::mkdir(path.c_str(), mode) == 0) return true;
  // Another process may have created it. `mkdir` also fails with EEXIST for a file and a trailing slash.
  return errno == EEXIST && platform::exists(path);
}

// `path` or its nearest existing parent; "" if there is none. A parent that cannot be read counts as missing, whereas
// the search for a mount point (SystemVolumes.cpp) fails there.
std::string nearestExisting(const std::string& path) {
  if (platform::kindOf(path) != platform::FileKind::kNone) return path;

  std::string parent = platform::deletingLastPathComponent(path);
  while (platform::kindOf(parent) == platform::FileKind::kNone) {
    // In place, because copying every parent of a path with 100,000 components takes minutes.
    if (!platform::cutLastComponent(parent)) return "";
  }
  return parent;
}

class OwnerChange : public platform::TreeVisitor {
 public:
  bool enter(const platform::TreeEntry& entry) override {
    change(entry);
    return entry.kind == platform::EntryKind::kFolder;
  }

  void leave(const platform::TreeEntry& entry) override { change(entry); }

 private:
  static void change(const platform::TreeEntry& entry) {
    if (::fchownat(entry.folder, entry.name, 0, 0, AT_SYMLINK_NOFOLLOW) == 0) return;
    const int error = errno;
    Logger::getInstance()->logWarn(kComponent,
                                   "Failed to change owner and group. Errorno (%d) error msg(%s) for ptah %s.", error,
                                   platform::errorText(error).c_str(), entry.path.c_str());
  }
};

}  // namespace

bool utilCreateDirectoryPath(const std::string& path, bool /*unused*/) {
  constexpr unsigned short kDefaultMode = 0775;
  return utilCreateDirectoryPathWithAttributes(path.c_str(), kUnchanged, kUnchanged, kDefaultMode);
}

bool utilCreateDirectoryPathWithAttributes(const char* path, unsigned int owner, unsigned int group,
                                           unsigned short mode) {
  if (path == nullptr) return false;

  for (const std::string& parent : missingParents(path))
    (void)createFolderIfMissing(parent, mode);  // the folder itself fails if a parent is needed
  if (!createFolderIfMissing(path, mode)) return false;
  if (owner == kUnchanged || group == kUnchanged) return true;
  return ::chown(path, owner, group) == 0 && ::chmod(path, mode) == 0;
}

bool utilFileExitsAtPath(const std::string& path) {
  const platform::AutoreleaseScope scope;
  return platform::kindOf(path) == platform::FileKind::kOther;
}

bool utilFolderExitsAtPath(const std::string& path) {
  const platform::AutoreleaseScope scope;
  return platform::kindOf(path) == platform::FileKind::kFolder;
}

bool utilRenamePathToPath(const std::string& from, const std::string& to) {
  if (::rename(from.c_str(), to.c_str()) == 0) return true;
  const int error = errno;
  Logger::getInstance()->logFatal(kComponent, "Failed to rename. Error code (%d:%s). Directory from %s to %s.", error,
                                  platform::errorText(error).c_str(), from.c_str(), to.c_str());
  return false;
}

bool utilDeleteFolder(const std::string& path, bool /*unused1*/, bool /*unused2*/) {
  const platform::AutoreleaseScope scope;
  if (isEmpty(path)) return true;

  const platform::Failure failure = platform::removeTree(path);
  if (!failure) return true;
  Logger::getInstance()->logInfo(kComponent, "NOTE Could not remove existing backup path. Error %s.", failure->c_str());
  return false;
}

bool utilDeleteFolderIfEmpty(const std::string& path) {
  const platform::AutoreleaseScope scope;
  if (isEmpty(path)) return true;

  if (!utilFolderExitsAtPath(path)) {
    Logger::getInstance()->logWarn(kComponent, "utilDeleteFolderIfEmpty.Not a directory: %s.", path.c_str());
    return false;
  }
  if (!platform::entriesOf(path).empty()) {
    Logger::getInstance()->logInfo(kComponent, "utilDeleteFolderIfEmpty.Files exist at path. %s.", path.c_str());
    return false;
  }
  const platform::Failure failure = platform::removeObject(path);
  if (!failure) return true;
  Logger::getInstance()->logWarn(kComponent, "utilDeleteFolderIfEmpty.Could not remove path:%s Error:%s.", path.c_str(),
                                 failure->c_str());
  return false;
}

bool utilFolderHasPermission(const std::string& path, const PermissionType& type) {
  const platform::AutoreleaseScope scope;
  if (!utilFolderExitsAtPath(path)) return false;
  return ::access(path.c_str(), type == PermissionType_Read ? R_OK : W_OK) == 0;
}

bool utilDeleteFileIfExitsAtPath(const std::string& path, bool /*unused*/) {
  const platform::AutoreleaseScope scope;
  if (!utilFileExitsAtPath(path)) return true;

  const platform::Failure failure = platform::removeObject(path);
  if (!failure) return true;
  Logger::getInstance()->logFatal(kComponent, "Error in utilDeleteFileIfExitsAtPath %s. error %s", path.c_str(),
                                  failure->c_str());
  return false;
}

bool utilCopySrcFileToDstFolder(const std::string& srcFile, const std::string& dstFolder, bool /*unused*/) {
  const platform::AutoreleaseScope scope;
  Logger* const log = Logger::getInstance();
  if (!utilFileExitsAtPath(srcFile)) {
    log->logFatal(kComponent, "Error Src file (%s) does not exits.", srcFile.c_str());
    return false;
  }
  if (!utilFolderExitsAtPath(dstFolder)) {
    log->logFatal(kComponent,
                  "Error Failed to copy src file to dst (%s) ... either dst does not exits or not a folder.",
                  dstFolder.c_str());
    return false;
  }
  const std::string target = platform::appendingPathComponent(platform::untilNul(dstFolder),
                                                              platform::lastPathComponent(platform::untilNul(srcFile)));
  const bool isSource = platform::isSameEntry(srcFile, target) || platform::isLinkTo(srcFile, target);
  if (!isSource && !utilDeleteFileIfExitsAtPath(target, false)) {
    log->logFatal(kComponent, "unable to delete dst file (%s).", target.c_str());
    return false;
  }
  const platform::Failure failure = platform::copyFile(srcFile, target);
  if (!failure) return true;
  log->logFatal(kComponent, "Error Failed to copy. Error(%s). Src file (%s) to dst file(%s).", failure->c_str(),
                srcFile.c_str(), target.c_str());
  return false;
}

bool utilChown(const std::string& path) {
  if (isEmpty(path)) {
    Logger::getInstance()->logWarn(kComponent, "Failed to open fts stream. %s.", path.c_str());
    return false;
  }
  OwnerChange visitor;
  platform::walkTree(path, visitor, platform::Mounts::kSkip);
  return true;
}

bool utilGetSubFolderList(const std::string& path, std::vector<std::string>& names) {
  const platform::AutoreleaseScope scope;
  if (!utilFolderExitsAtPath(path)) return false;

  const std::string folder = platform::untilNul(path);
  // Collected separately, because `path` may be an element of `names`.
  std::vector<std::string> found;
  for (platform::FolderEntry& entry : platform::entriesOf(folder)) {
    if (entry.kind == platform::EntryKind::kOther) continue;
    if (utilFolderExitsAtPath(platform::appendingPathComponent(folder, entry.name)))
      found.push_back(std::move(entry.name));
  }
  names.insert(names.end(), std::make_move_iterator(found.begin()), std::make_move_iterator(found.end()));
  return true;
}

bool utilGetDisplayNameForFolderPath(const std::string& path, std::string& displayName) {
  const platform::AutoreleaseScope scope;
  if (isEmpty(path) || platform::kindOf(path) != platform::FileKind::kNone) return false;

  displayName.clear();
  return true;
}

bool utilIsCreatableWritablePath(const char* path, std::string& existingPath) {
  const platform::AutoreleaseScope scope;
  if (path == nullptr) return false;

  const std::string nearest = nearestExisting(platform::expandingTilde(path));
  if (::access(nearest.c_str(), R_OK | W_OK | X_OK) != 0) return false;
  existingPath = nearest;
  return true;
}
