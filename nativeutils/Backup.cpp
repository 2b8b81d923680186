#include "nativeutils/Backup.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "nativeutils/Files.h"
#include "nativeutils/Strings.h"
#include "platform/EventLoop.h"
#include "platform/Failure.h"
#include "platform/FileKind.h"
#include "platform/FileTree.h"
#include "platform/Path.h"
#include "platform/Replace.h"

namespace {

using nativeutils::kComponent;

constexpr char kMark[] = "_bkp";

// As by `atoi`, but limited to the range of `int`.
int numberAfterLastMark(const std::string& path) {
  const std::string text = path.substr(path.rfind(kMark) + sizeof kMark - 1);
  return static_cast<int>(std::clamp<long>(std::strtol(text.c_str(), nullptr, 10), INT_MIN, INT_MAX));
}

// The other backups of an object, and the path of the next one.
class OtherBackups : public platform::TreeVisitor {
 public:
  OtherBackups(const std::string& parent, const std::string& name) : prefix_(parent + "//"), pattern_(name + kMark) {
    // The slash follows a symbolic link.
    platform::walkTree(parent + "/", *this, platform::Mounts::kEnter);
  }

  const std::vector<std::string>& paths() const { return paths_; }

  std::string next() const {
    if (largest_ < INT_MAX) return numbered(largest_ + 1);
    // A path in the list will be deleted, even if another process has removed its object in the meantime.
    int number = 1;
    while (platform::exists(numbered(number)) || isListed(numbered(number)))
      ++number;
    return numbered(number);
  }

 private:
  bool enter(const platform::TreeEntry& entry) override {
    if (entry.relative.find(pattern_) != std::string_view::npos) add(prefix_ + std::string(entry.relative));
    return entry.kind == platform::EntryKind::kFolder;
  }

  void add(const std::string& path) {
    if (platform::kindOf(path) == platform::FileKind::kNone) return;
    paths_.push_back(path);
    largest_ = std::max(largest_, numberAfterLastMark(path));
  }

  bool isListed(const std::string& path) const { return std::find(paths_.begin(), paths_.end(), path) != paths_.end(); }

  std::string numbered(int number) const {
    std::string digits;
    utilGetNativeStringFromInt(number, digits);
    return prefix_ + pattern_ + digits;
  }

  std::string prefix_;
  std::string pattern_;
  std::vector<std::string> paths_;
  int largest_ = 0;
};

void deleteObjectAt(const std::string& backup) {
  if (!platform::exists(backup)) return;
  Logger::getInstance()->logWarn(kComponent,
                                 "Tring to backup folder, old backup folder already exits, trying to delete folder %s.",
                                 backup.c_str());
  if (utilDeleteFolder(backup, false, false)) return;
  Logger::getInstance()->logWarn(kComponent, "Failed to delete backup folder %s.", backup.c_str());
}

void deleteAll(const std::vector<std::string>& paths) {
  if (paths.empty()) return;
  Logger::getInstance()->logInfo(kComponent, "Trying to delete other backup paths");
  for (const std::string& path : paths) {
    if (!utilDeleteFolder(path, false, false))
      Logger::getInstance()->logError(kComponent, "Failed to delete back up folder '%s'", path.c_str());
  }
}

bool logFailedRename(int error, const std::string& from, const std::string& to) {
  Logger::getInstance()->logFatal(kComponent, "Failed to rename Error code (%d:%s) the directory from %s to %s.", error,
                                  platform::errorText(error).c_str(), from.c_str(), to.c_str());
  return false;
}

}  // namespace

bool utilBackupFolderIfExits(const std::string& pathToBkp, std::string& backupPath, bool /*unused*/) {
  Logger* const log = Logger::getInstance();
  log->logInfo(kComponent, "utilBackupFolderIfExits pathToBkp %s", pathToBkp.c_str());
  const platform::AutoreleaseScope scope;
  const std::string path = platform::untilNul(pathToBkp);
  if (!utilPathExists(path)) {
    backupPath.clear();
    log->logInfo(kComponent, "NOTE trying to backup ... Source path does not exits. So Success.");
    return true;
  }

  const std::string parent = platform::parentFolder(path);
  std::optional<OtherBackups> others;
  std::string backup;
  if (platform::kindOf(parent) == platform::FileKind::kNone) {
    log->logInfo(kComponent, "Backup parent folder path '%s' is not present", parent.c_str());
  } else {
    others.emplace(parent, platform::lastPathComponent(path));
    backup = others->next();
    log->logInfo(kComponent, "Backup folder path '%s'", backup.c_str());
    deleteObjectAt(backup);
  }
  if (!util_renameFolderToFolder(path, backup)) {
    log->logFatal(kComponent, "Error Failed to rename the directory.");
    return false;
  }
  backupPath = backup;
  if (others) deleteAll(others->paths());
  return true;
}

bool util_renameFolderToFolder(const std::string& from, const std::string& to) {
  Logger* const log = Logger::getInstance();
  if (utilPathExists(to)) {
    log->logInfo(kComponent, "NOTE trying to backup ... backup already exists. trying to remove...");
    if (!platform::isRemovedWith(to, from)) {
      const int error = platform::replace(from, to);
      if (error == 0) return true;
      if (error != EEXIST) return logFailedRename(error, from, to);
      // Logs why the object cannot be removed.
      if (!utilDeleteFolder(to, false, false)) {
        log->logError(kComponent, "Failed to delete the backup file: %s", to.c_str());
        return false;
      }
    }
  }
  if (::rename(from.c_str(), to.c_str()) == 0) return true;
  return logFailedRename(errno, from, to);
}

bool utilRestoreFolder(const std::string& backupPath, const std::string& targetPath) {
  const platform::AutoreleaseScope scope;
  return util_renameFolderToFolder(backupPath, targetPath);
}

bool utilCreateSymlinkFromPathToPath(const std::string& target, const std::string& linkPath) {
  constexpr unsigned int kSuperUser = 0;
  constexpr unsigned int kAdministrators = 80;
  constexpr unsigned short kMode = 0775;
  Logger* const log = Logger::getInstance();
  const platform::AutoreleaseScope scope;
  const std::string parent = platform::deletingLastPathComponent(platform::untilNul(linkPath));
  if (!utilFolderExitsAtPath(parent) &&
      !utilCreateDirectoryPathWithAttributes(parent.c_str(), kSuperUser, kAdministrators, kMode)) {
    log->logError(kComponent, "Error creating directory %s", parent.c_str());
    return false;
  }

  const std::string location = platform::deletingPathExtension(platform::untilNul(linkPath));
  std::string backup;
  if (!utilBackupFolderIfExits(location, backup, false)) {
    log->logError(kComponent, "Failed in backing up folder %s to folder %s", location.c_str(), backup.c_str());
    return false;
  }
  log->logInfo(kComponent, "Creating symbolic link of %s to folder %s", target.c_str(), location.c_str());
  if (::symlink(target.c_str(), location.c_str()) != 0) {
    const int error = errno;
    log->logError(kComponent, "Error Creating symbolic link for path (%s) to path (%s), Errorno: %d, error msg: %s",
                  target.c_str(), location.c_str(), error, platform::errorText(error).c_str());
    if (!utilRestoreFolder(backup, location))
      log->logError(kComponent, "Error in restoring backedup folder %s to %s", backup.c_str(), location.c_str());
    return false;
  }
  if (!backup.empty() && !utilDeleteFolder(backup, false, false))
    log->logError(kComponent, "Could not delete the backedup folder %s", backup.c_str());
  return true;
}
