// Tests of backups while system calls fail, other processes change the folder, or the process is killed. This program
// replaces `stat`, `readdir`, `symlink`, `rename` and `unlinkat`.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <string>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {
std::string hiddenPath;              // `stat` fails for it
std::string pathRemovedByStat;       // `stat` succeeds for it once
std::string unlistedName;            // `readdir` omits it
std::function<void()> onSymlink;     // `symlink` fails after it
int renamesUntilFailure = 0;         // 0: `rename` does not fail
std::string nameThatEndsTheProcess;  // `unlinkat` ends the process instead of removing it
}  // namespace

extern "C" int stat(const char* path, struct stat* object) noexcept {
  if (hiddenPath == path) {
    errno = ENOENT;
    return -1;
  }
  const int result = ::fstatat(AT_FDCWD, path, object, 0);
  if (pathRemovedByStat == path) ::unlink(path);
  return result;
}

extern "C" struct dirent* readdir(DIR* folder) {
  using Readdir = struct dirent* (*)(DIR*);
  static const auto original = reinterpret_cast<Readdir>(::dlsym(RTLD_NEXT, "readdir"));
  struct dirent* entry = original(folder);
  while (entry != nullptr && unlistedName == entry->d_name)
    entry = original(folder);
  return entry;
}

extern "C" int symlink(const char* target, const char* path) noexcept {
  if (!onSymlink) return ::symlinkat(target, AT_FDCWD, path);
  onSymlink();
  errno = EEXIST;
  return -1;
}

extern "C" int rename(const char* from, const char* to) noexcept {
  if (renamesUntilFailure == 0 || --renamesUntilFailure > 0) return ::renameat(AT_FDCWD, from, AT_FDCWD, to);
  errno = EIO;
  return -1;
}

extern "C" int unlinkat(int folder, const char* name, int flags) noexcept {
  if (nameThatEndsTheProcess == name) ::_exit(0);
  return static_cast<int>(::syscall(SYS_unlinkat, folder, name, flags));
}

namespace {

using support::contentsOf;
using testing::ElementsAre;

using BackupFailureTest = nativeutils_test::BackupTest;

TEST_F(BackupFailureTest, FailsWithoutAParentFolder) {
  support::writeFile(app, "current");
  hiddenPath = t;
  EXPECT_EQ(backedUp(app), "failed");
  hiddenPath.clear();
  EXPECT_EQ(contentsOf(app), "current");
  EXPECT_THAT(logged(), ElementsAre(started(app), "INFO Backup parent folder path '" + t + "' is not present",
                                    "FATAL Failed to rename Error code (2:No such file or directory) the directory "
                                    "from " +
                                        app + " to .",
                                    "FATAL Error Failed to rename the directory."));
}

TEST_F(BackupFailureTest, DoesNotUseANumberThatIsDeleted) {
  support::writeFile(app, "current");
  support::writeFile(t + "/App_bkp1", "old");
  support::writeFile(t + "/App_bkp2147483647", "old");
  pathRemovedByStat = t + "//App_bkp1";
  EXPECT_EQ(backedUp(app), t + "//App_bkp2");
  pathRemovedByStat.clear();
  EXPECT_EQ(contentsOf(t + "/App_bkp2"), "current");
  EXPECT_THAT(support::namesIn(t), ElementsAre("App_bkp2"));
}

TEST_F(BackupFailureTest, KeepsAnEntryRenamedToAnotherSpelling) {
  support::writeFile(app, "current");
  ASSERT_EQ(::link(app.c_str(), (t + "/app").c_str()), 0);
  // As in a folder that is not case-sensitive: both names are found, one is listed.
  unlistedName = "app";
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/app"));
  EXPECT_TRUE(util_renameFolderToFolder(t + "/app", app));
  unlistedName.clear();
  EXPECT_THAT(support::namesIn(t), ElementsAre("App", "app"));
  EXPECT_THAT(logged(), ElementsAre(replacing, replacing));
}

TEST_F(BackupFailureTest, KeepsBothObjectsAfterAFailedRename) {
  makeApp(t + "/new", "new");
  makeApp(app, "old");
  renamesUntilFailure = 2;
  EXPECT_FALSE(util_renameFolderToFolder(t + "/new", app));
  EXPECT_THAT(support::namesIn(t), ElementsAre("App", "new"));
  EXPECT_EQ(contentsOf(app + "/file"), "old");
  EXPECT_EQ(contentsOf(t + "/new/file"), "new");
  EXPECT_THAT(logged(), ElementsAre(replacing,
                                    "FATAL Failed to rename Error code (5:Input/output error) the directory "
                                    "from " +
                                        t + "/new to " + app + "."));
}

TEST_F(BackupFailureTest, ReplacesAFolderThatCannotBeRenamed) {
  makeApp(t + "/new", "new");
  makeApp(app, "old");
  renamesUntilFailure = 1;
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", app));
  EXPECT_THAT(support::namesIn(t), ElementsAre("App"));
  EXPECT_EQ(contentsOf(app + "/file"), "new");
}

// With an exchange of the two objects, the rest of the replaced one would be at the backup's path, from where the next
// restore would take it.
TEST_F(BackupFailureTest, KeepsARestoredFolderIfKilledDuringRemoval) {
  makeApp(t + "/App_bkp1", "backup");
  makeApp(app, "half installed");
  support::Child killed([&] {
    nameThatEndsTheProcess = "file";
    return utilRestoreFolder(t + "/App_bkp1", app) ? 1 : 2;
  });
  EXPECT_EQ(killed.wait(), 0);
  EXPECT_EQ(contentsOf(app + "/file"), "backup");
  EXPECT_FALSE(utilRestoreFolder(t + "/App_bkp1", app));
  EXPECT_EQ(contentsOf(app + "/file"), "backup");
}

class SymlinkFailureTest : public BackupFailureTest {
 protected:
  ~SymlinkFailureTest() override { onSymlink = nullptr; }

  std::string failed() const {
    return "ERROR Error Creating symbolic link for path (/opt/real) to path (" + link +
           "), Errorno: 17, error msg: File exists";
  }

  const std::string link = t + "/Link";
};

TEST_F(SymlinkFailureTest, KeepsAFileCreatedByAnotherProcess) {
  onSymlink = [&] { support::writeFile(link, "other"); };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(contentsOf(link), "other");
  EXPECT_THAT(logged(),
              testing::IsSupersetOf({failed(), replacing,
                                     "FATAL Failed to rename Error code (2:No such file or directory) the directory "
                                     "from  to " +
                                         link + ".",
                                     "ERROR Error in restoring backedup folder  to " + link}));
}

TEST_F(SymlinkFailureTest, LogsABackupThatCannotBeRestored) {
  support::writeFile(link, "old");
  const std::string backup = t + "//Link_bkp1";
  onSymlink = [&] {
    ::unlink(backup.c_str());
    support::writeFile(link, "other");
  };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(contentsOf(link), "other");
  EXPECT_THAT(logged(),
              testing::IsSupersetOf({failed(),
                                     "FATAL Failed to rename Error code (2:No such file or directory) the directory "
                                     "from " +
                                         backup + " to " + link + ".",
                                     "ERROR Error in restoring backedup folder " + backup + " to " + link}));
}

TEST_F(SymlinkFailureTest, RestoresTheBackupOverANewFile) {
  support::writeFile(link, "old");
  onSymlink = [&] { support::writeFile(link, "other"); };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(contentsOf(link), "old");
}

}  // namespace
