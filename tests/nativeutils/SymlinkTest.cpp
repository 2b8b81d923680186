#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Files.h"
#include "tests/support/Trees.h"

namespace {

using support::contentsOf;
using support::makeFolder;
using support::namesIn;
using testing::ElementsAre;
using testing::IsEmpty;

class SymlinkTest : public nativeutils_test::BackupTest {
 protected:
  std::string creating(const std::string& target) const {
    return "INFO Creating symbolic link of " + target + " to folder " + link;
  }
  std::string nothingThere() const { return "INFO NOTE trying to backup ... Source path does not exits. So Success."; }

  const std::string link = t + "/Link";
};

TEST_F(SymlinkTest, OmitsTheExtension) {
  EXPECT_TRUE(utilCreateSymlinkFromPathToPath("/opt/real", t + "/Link.app"));
  EXPECT_EQ(std::filesystem::read_symlink(link), "/opt/real");
  EXPECT_THAT(namesIn(t), ElementsAre("Link"));
  EXPECT_THAT(logged(), ElementsAre(started(link), nothingThere(), creating("/opt/real")));
}

TEST_F(SymlinkTest, KeepsItsTextAsGiven) {
  for (const char* target : {"../relative//path/", "line\nbreak\xff", "."}) {
    EXPECT_TRUE(utilCreateSymlinkFromPathToPath(target, link));
    EXPECT_EQ(std::filesystem::read_symlink(link), target);
  }
}

TEST_F(SymlinkTest, ReplacesAFolder) {
  makeApp(link, "old");
  support::writeFile(t + "/Link.app", "unrelated");
  EXPECT_TRUE(utilCreateSymlinkFromPathToPath("/opt/real", t + "/Link.app"));
  EXPECT_EQ(std::filesystem::read_symlink(link), "/opt/real");
  EXPECT_THAT(namesIn(t), ElementsAre("Link", "Link.app"));
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating("/opt/real")));
}

TEST_F(SymlinkTest, CreatesAMissingFolderForTheAdministrators) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  EXPECT_TRUE(utilCreateSymlinkFromPathToPath("/opt/real", t + "/x/y/Link.app"));
  struct stat made {};
  ASSERT_EQ(::stat((t + "/x/y").c_str(), &made), 0);
  EXPECT_EQ(made.st_uid, 0u);
  EXPECT_EQ(made.st_gid, 80u);
  EXPECT_EQ(made.st_mode & 07777, 0775u);
  EXPECT_EQ(std::filesystem::read_symlink(t + "/x/y/Link"), "/opt/real");
}

TEST_F(SymlinkTest, NeedsTheSuperUserForAMissingFolder) {
  EXPECT_TRUE(withoutPowers([&] { return !utilCreateSymlinkFromPathToPath("/opt/real", t + "/x/Link.app"); }));
  EXPECT_THAT(logged(), ElementsAre("ERROR Error creating directory " + t + "/x"));
}

TEST_F(SymlinkTest, NeedsAFolder) {
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("/opt/real", "Link.app"));
  EXPECT_THAT(logged(), ElementsAre("ERROR Error creating directory "));
}

TEST_F(SymlinkTest, LogsAFailedBackup) {
  support::writeFile(link, "old");
  ASSERT_EQ(::chmod(t.c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilCreateSymlinkFromPathToPath("/opt/real", link); }));
  EXPECT_EQ(contentsOf(link), "old");
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"),
                                    "FATAL Failed to rename Error code (13:Permission denied) the directory from " +
                                        link + " to " + t + "//Link_bkp1.",
                                    "FATAL Error Failed to rename the directory.",
                                    "ERROR Failed in backing up folder " + link + " to folder "));
}

TEST_F(SymlinkTest, RestoresTheObjectAfterAFailure) {
  makeApp(link, "old");
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("", link));
  EXPECT_EQ(contentsOf(link + "/file"), "old");
  EXPECT_THAT(namesIn(t), ElementsAre("Link"));
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating(""),
                                    "ERROR Error Creating symbolic link for path () to path (" + link +
                                        "), Errorno: 2, error msg: No such file or directory"));
}

TEST_F(SymlinkTest, LogsAFailedRestoreWithoutABackup) {
  const std::string tooLong(5000, 'x');
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("", link));
  EXPECT_THAT(logged(),
              ElementsAre(started(link), nothingThere(), creating(""),
                          "ERROR Error Creating symbolic link for path () to path (" + link +
                              "), Errorno: 2, error msg: No such file or directory",
                          "FATAL Failed to rename Error code (2:No such file or directory) the directory from  to " +
                              link + ".",
                          "ERROR Error in restoring backedup folder  to " + link));
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath(tooLong, link));
  EXPECT_THAT(namesIn(t), IsEmpty());
}

TEST_F(SymlinkTest, LogsABackupThatCannotBeDeleted) {
  makeFolder(link);
  makeFolder(link + "/closed");
  support::writeFile(link + "/closed/file", "old");
  ASSERT_EQ(::chmod((link + "/closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return utilCreateSymlinkFromPathToPath("/opt/real", link); }));
  EXPECT_EQ(std::filesystem::read_symlink(link), "/opt/real");
  EXPECT_EQ(contentsOf(t + "/Link_bkp1/closed/file"), "old");
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating("/opt/real"),
                                    denied(t + "//Link_bkp1/closed/file"),
                                    "ERROR Could not delete the backedup folder " + t + "//Link_bkp1"));
}

}  // namespace
