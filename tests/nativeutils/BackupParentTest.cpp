// What happens when others are at work at the worst moment. No file system does that on demand, so this program answers
// the library's `stat`, `readdir` and `symlink` itself.

#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <functional>
#include <string>
#include <vector>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Files.h"

namespace {
std::string goneFromSight;
std::string removedOnceSeen;
std::string notListed;
std::function<void()> insteadOfTheLink;
}  // namespace

extern "C" int stat(const char* path, struct stat* object) noexcept {
  if (goneFromSight == path) {
    errno = ENOENT;
    return -1;
  }
  const int result = ::fstatat(AT_FDCWD, path, object, 0);
  if (removedOnceSeen == path) ::unlink(path);
  return result;
}

extern "C" struct dirent* readdir(DIR* folder) {
  using Readdir = struct dirent* (*)(DIR*);
  static const auto original = reinterpret_cast<Readdir>(::dlsym(RTLD_NEXT, "readdir"));
  struct dirent* entry = original(folder);
  while (entry != nullptr && notListed == entry->d_name)
    entry = original(folder);
  return entry;
}

extern "C" int symlink(const char* target, const char* path) noexcept {
  if (!insteadOfTheLink) return ::symlinkat(target, AT_FDCWD, path);
  insteadOfTheLink();
  errno = EEXIST;
  return -1;
}

namespace {

class BackupParentTest : public nativeutils_test::LoggedTest {
 protected:
  const std::string removing = "INFO NOTE trying to backup ... backup already exists. trying to remove...";
};

TEST_F(BackupParentTest, WithoutItTheObjectIsNotMoved) {
  const support::TemporaryFolder folder;
  const std::string app = folder / "App";
  support::writeFile(app, "current");
  goneFromSight = folder.path();
  std::string backup = "former";
  const bool moved = utilBackupFolderIfExits(app, backup, false);
  goneFromSight.clear();
  EXPECT_FALSE(moved);
  EXPECT_EQ(backup, "former");
  EXPECT_EQ(support::contentsOf(app), "current");
  EXPECT_THAT(logged(),
              testing::ElementsAre(
                  "INFO utilBackupFolderIfExits pathToBkp " + app,
                  "INFO Backup parent folder path '" + folder.path() + "' is not present",
                  "FATAL Failed to rename Error code (2:No such file or directory) the directory from " + app + " to .",
                  "FATAL Error Failed to rename the directory."));
}

TEST_F(BackupParentTest, TheBackupDoesNotTakeANumberThatIsGoingToBeDeleted) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "App", "current");
  support::writeFile(folder / "App_bkp1", "old");
  support::writeFile(folder / "App_bkp2147483647", "old");
  removedOnceSeen = folder.path() + "//App_bkp1";
  std::string backup;
  EXPECT_TRUE(utilBackupFolderIfExits(folder / "App", backup, false));
  removedOnceSeen.clear();
  EXPECT_EQ(backup, folder.path() + "//App_bkp2");
  EXPECT_EQ(support::contentsOf(folder / "App_bkp2"), "current");
  EXPECT_THAT(support::namesIn(folder.path()), testing::ElementsAre("App_bkp2"));
}

TEST_F(BackupParentTest, TwoSpellingsOfOneEntryLoseNothing) {
  const support::TemporaryFolder folder;
  support::writeFile(folder / "App", "current");
  ASSERT_EQ(::link((folder / "App").c_str(), (folder / "app").c_str()), 0);
  // As in a folder that is not case-sensitive: both names are found, and one is listed.
  notListed = "app";
  EXPECT_TRUE(util_renameFolderToFolder(folder / "App", folder / "app"));
  EXPECT_TRUE(util_renameFolderToFolder(folder / "app", folder / "App"));
  notListed.clear();
  EXPECT_EQ(support::namesIn(folder.path()), (std::vector<std::string>{"App", "app"}));
  EXPECT_THAT(logged(), testing::ElementsAre(removing, removing));
}

class LinkTest : public BackupParentTest {
 protected:
  ~LinkTest() override { insteadOfTheLink = nullptr; }

  std::string failed() const {
    return "ERROR Error Creating symbolic link for path (/opt/real) to path (" + link +
           "), Errorno: 17, error msg: File exists";
  }

  const support::TemporaryFolder folder;
  const std::string link = folder / "Link";
};

TEST_F(LinkTest, WhatSomebodyElseHasPutThereStays) {
  insteadOfTheLink = [&] { support::writeFile(link, "theirs"); };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(support::contentsOf(link), "theirs");
  EXPECT_THAT(logged(),
              testing::IsSupersetOf({failed(), removing,
                                     "FATAL Failed to rename Error code (2:No such file or directory) the directory "
                                     "from  to " +
                                         link + ".",
                                     "ERROR Error in restoring backedup folder  to " + link}));
}

TEST_F(LinkTest, SaysWhenTheBackupCannotBeMovedBack) {
  support::writeFile(link, "old");
  const std::string backup = folder.path() + "//Link_bkp1";
  insteadOfTheLink = [&] {
    ::unlink(backup.c_str());
    support::writeFile(link, "theirs");
  };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(support::contentsOf(link), "theirs");
  EXPECT_THAT(logged(),
              testing::IsSupersetOf({failed(),
                                     "FATAL Failed to rename Error code (2:No such file or directory) the directory "
                                     "from " +
                                         backup + " to " + link + ".",
                                     "ERROR Error in restoring backedup folder " + backup + " to " + link}));
}

TEST_F(LinkTest, ABackupTakesThePlaceOfWhatHasComeThereSince) {
  support::writeFile(link, "old");
  insteadOfTheLink = [&] { support::writeFile(link, "theirs"); };
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", link));
  EXPECT_EQ(support::contentsOf(link), "old");
}

}  // namespace
