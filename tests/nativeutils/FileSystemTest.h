// Fixtures for tests of the file functions.

#pragma once

#include <unistd.h>

#include <functional>
#include <string>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Trees.h"

namespace nativeutils_test {

class FileSystemTest : public LoggedTest {
 protected:
  static bool isSuperUser() { return ::geteuid() == 0; }

  // Runs `body` in a process to which permission bits apply, also if it is run by the super-user.
  static bool withoutPowers(const std::function<bool()>& body) {
    support::Child powerless([&] { return support::dropCapabilities() && body() ? 0 : 1; });
    return powerless.wait() == 0;
  }

  const support::TemporaryFolder folder;
};

class BackupTest : public FileSystemTest {
 protected:
  BackupTest() { support::makeFolder(t); }

  // A folder with a file of this text.
  static void makeApp(const std::string& path, const std::string& text) {
    support::makeFolder(path);
    support::writeFile(path + "/file", text);
  }

  // The path of the backup, or "failed".
  static std::string backedUp(const std::string& path) {
    std::string backup = "unchanged";
    if (utilBackupFolderIfExits(path, backup, false)) return backup;
    EXPECT_EQ(backup, "unchanged");
    return "failed";
  }

  // Log lines.
  static std::string started(const std::string& path) { return "INFO utilBackupFolderIfExits pathToBkp " + path; }
  static std::string named(const std::string& path) { return "INFO Backup folder path '" + path + "'"; }
  static std::string missing(const std::string& path) {
    return "INFO NOTE Could not remove existing backup path. Error No such file or directory: " + path + ".";
  }
  static std::string denied(const std::string& path) {
    return "INFO NOTE Could not remove existing backup path. Error Permission denied: " + path + ".";
  }
  static std::string remains(const std::string& path) { return "ERROR Failed to delete back up folder '" + path + "'"; }

  const std::string t = folder / "t";
  const std::string app = t + "/App";
  const std::string deletingOthers = "INFO Trying to delete other backup paths";
  const std::string replacing = "INFO NOTE trying to backup ... backup already exists. trying to remove...";
};

}  // namespace nativeutils_test
