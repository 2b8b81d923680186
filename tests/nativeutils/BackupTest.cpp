#include "nativeutils/Backup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <functional>
#include <system_error>

#include "nativeutils/Files.h"
#include "platform/FileKind.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Powers.h"
#include "tests/support/Trees.h"

namespace {

using support::contentsOf;
using support::namesIn;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

class BackupTest : public nativeutils_test::LoggedTest {
 protected:
  BackupTest() { makeFolder(t); }

  void makeFolder(const std::string& path) { ASSERT_EQ(::mkdir(path.c_str(), 0700), 0) << path; }
  void makeFile(const std::string& path, const std::string& text = "") { support::writeFile(path, text); }
  void makeLink(const std::string& target, const std::string& path) {
    ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
  }

  // A folder that holds a file with these contents.
  void makeApp(const std::string& path, const std::string& text) {
    makeFolder(path);
    makeFile(path + "/file", text);
  }

  // Where the backup is; "failed" when there is none.
  static std::string backedUp(const std::string& path) {
    std::string backup = "former";
    if (utilBackupFolderIfExits(path, backup, false)) return backup;
    EXPECT_EQ(backup, "former");
    return "failed";
  }

  static bool withoutPowers(const std::function<bool()>& body) {
    support::Child powerless([&] { return support::giveUpPowers() && body() ? 0 : 1; });
    return powerless.wait() == 0;
  }

  std::string started(const std::string& path) const { return "INFO utilBackupFolderIfExits pathToBkp " + path; }
  std::string named(const std::string& path) const { return "INFO Backup folder path '" + path + "'"; }
  std::string missed(const std::string& path) const {
    return "INFO NOTE Could not remove existing backup path. Error No such file or directory: " + path + ".";
  }
  std::string denied(const std::string& path) const {
    return "INFO NOTE Could not remove existing backup path. Error Permission denied: " + path + ".";
  }
  std::string stays(const std::string& path) const { return "ERROR Failed to delete back up folder '" + path + "'"; }

  const support::TemporaryFolder folder;
  const std::string t = folder / "t";
  const std::string app = t + "/App";
  const std::string others = "INFO Trying to delete other backup paths";
  const std::string removing = "INFO NOTE trying to backup ... backup already exists. trying to remove...";
};

TEST_F(BackupTest, TheFirstOneGetsTheNumberOne) {
  makeApp(app, "current");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1/file"), "current");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp1")));
}

TEST_F(BackupTest, TheNextOneGetsTheNextNumberAndOlderOnesGo) {
  makeApp(app, "current");
  makeFolder(t + "/App_bkp2");
  makeFolder(t + "/App_bkp7");
  EXPECT_EQ(backedUp(app), t + "//App_bkp8");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp8"));
  EXPECT_EQ(contentsOf(t + "/App_bkp8/file"), "current");
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp8"), others));
}

TEST_F(BackupTest, TheThirdArgumentMeansNothing) {
  makeApp(app, "current");
  makeFolder(t + "/App_bkp2");
  std::string backup;
  EXPECT_TRUE(utilBackupFolderIfExits(app, backup, true));
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
}

TEST_F(BackupTest, AnEntryWithoutANumberIsABackupThatAddsNone) {
  makeApp(app, "current");
  makeFile(t + "/App_bkp");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, OfNothingIsDone) {
  makeFile(t + "/App_bkp3");
  EXPECT_EQ(backedUp(app), "");
  EXPECT_EQ(backedUp(""), "");
  EXPECT_EQ(backedUp(folder / "missing/App"), "");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
  const std::string done = "INFO NOTE trying to backup ... Source path does not exits. So Success.";
  EXPECT_THAT(logged(), ElementsAre(started(app), done, started(""), done, started(folder / "missing/App"), done));
}

TEST_F(BackupTest, ADanglingLinkIsBackedUp) {
  makeLink("nowhere", app);
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(std::filesystem::read_symlink(t + "/App_bkp1"), "nowhere");
}

TEST_F(BackupTest, AFileIsBackedUp) {
  makeFile(app, "text");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1"), "text");
}

TEST_F(BackupTest, AnUnrelatedNameThatHoldsTheMarkCountsToo) {
  makeApp(app, "current");
  makeFile(t + "/OldApp_bkp5");
  EXPECT_EQ(backedUp(app), t + "//App_bkp6");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp6"));
}

TEST_F(BackupTest, ANameWithoutTheWholeMarkDoesNotCount) {
  makeApp(app, "current");
  for (const char* name : {"/App_bk9", "/App_9", "/app_bkp9", "/Ap_bkp9", "/App _bkp9"})
    makeFile(t + name);
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(namesIn(t).size(), 6u);
}

TEST_F(BackupTest, ANumberIsReadAsFarAsItGoes) {
  const std::pair<const char*, const char*> cases[] = {
      {"App_bkp3x", "App_bkp4"},  {"App_bkp03", "App_bkp4"},     {"App_bkpx", "App_bkp1"},
      {"App_bkp-5", "App_bkp1"},  {"App_bkp+5", "App_bkp6"},     {"App_bkp 5", "App_bkp6"},
      {"App_bkp\n5", "App_bkp6"}, {"App_bkp5_bkp2", "App_bkp3"}, {"App_bkp5_bkp", "App_bkp1"},
  };
  for (const auto& [other, next] : cases) {
    makeFile(app, "current");
    makeFile(t + "/" + other);
    EXPECT_EQ(backedUp(app), t + "//" + next) << other;
    EXPECT_THAT(namesIn(t), ElementsAre(next)) << other;
    ASSERT_EQ(::unlink((t + "/" + next).c_str()), 0);
  }
}

TEST_F(BackupTest, AfterTheLargestNumberTheSmallestFreeOneIsTakenAndNothingNewIsLost) {
  for (const char* other : {"App_bkp2147483647", "App_bkp2147483648", "App_bkp99999999999999999999999"}) {
    makeFile(app, "current");
    makeFile(t + "/" + other);
    makeFile(t + "/App_bkp2");
    makeLink("nowhere", t + "/App_bkp1");
    EXPECT_EQ(backedUp(app), t + "//App_bkp3") << other;
    EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1", "App_bkp3")) << other;
    EXPECT_EQ(contentsOf(t + "/App_bkp3"), "current");
    ASSERT_EQ(::unlink((t + "/App_bkp1").c_str()), 0);
    ASSERT_EQ(::unlink((t + "/App_bkp3").c_str()), 0);
  }
}

TEST_F(BackupTest, TheLastNumberCanBeReached) {
  makeFile(app, "current");
  makeFile(t + "/App_bkp2147483646");
  EXPECT_EQ(backedUp(app), t + "//App_bkp2147483647");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp2147483647"));
}

TEST_F(BackupTest, EntriesAtEveryDepthCount) {
  makeApp(app, "current");
  makeFolder(t + "/other");
  makeFolder(t + "/other/deeper");
  makeFile(t + "/other/deeper/App_bkp4");
  makeFile(t + "/other/file");
  EXPECT_EQ(backedUp(app), t + "//App_bkp5");
  EXPECT_THAT(namesIn(t + "/other/deeper"), IsEmpty());
  EXPECT_THAT(namesIn(t + "/other"), ElementsAre("deeper", "file"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp5"), others));
}

TEST_F(BackupTest, WhatIsInAnOlderBackupIsMissedAfterIt) {
  makeFile(app, "current");
  makeFolder(t + "/App_bkp2");
  makeFile(t + "/App_bkp2/file");
  EXPECT_EQ(backedUp(app), t + "//App_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp3"), others, missed(t + "//App_bkp2/file"),
                                    stays(t + "//App_bkp2/file")));
}

TEST_F(BackupTest, WhatTheObjectHoldsStaysInItsBackup) {
  makeApp(app, "current");
  makeFile(app + "/App_bkp6", "precious");
  EXPECT_EQ(backedUp(app), t + "//App_bkp7");
  EXPECT_EQ(contentsOf(t + "/App_bkp7/App_bkp6"), "precious");
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp7"), others, missed(t + "//App/App_bkp6"),
                                    stays(t + "//App/App_bkp6")));
}

TEST_F(BackupTest, LinksAreNotFollowedAndDanglingOnesAreNothing) {
  makeFolder(folder / "outside");
  makeFile(folder / "outside/App_bkp9", "precious");
  makeFile(app, "current");
  makeLink("../outside", t + "/link");
  makeLink("../outside", t + "/App_bkp2");
  makeLink("nowhere", t + "/App_bkp8");
  EXPECT_EQ(backedUp(app), t + "//App_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3", "App_bkp8", "link"));
  EXPECT_EQ(contentsOf(folder / "outside/App_bkp9"), "precious");
}

TEST_F(BackupTest, OtherFileSystemsAreSearchedToo) {
  makeFile(app, "current");
  makeFolder(t + "/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(t + "/mount", 1 << 20)) return support::kImpossible;
    makeFile(t + "/mount/App_bkp9");
    return backedUp(app) == t + "//App_bkp10" && namesIn(t + "/mount").empty() ? 0 : 1;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(BackupTest, TheParentMayBeALink) {
  makeFile(app, "current");
  makeFile(t + "/App_bkp4");
  makeLink("t", folder / "link");
  EXPECT_EQ(backedUp(folder / "link/App"), folder / "link//App_bkp5");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp5"));
}

TEST_F(BackupTest, ATrailingSlashAndExtraOnesMeanNothing) {
  makeFolder(app);
  EXPECT_EQ(backedUp(t + "///App//"), t + "//App_bkp1");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, ARelativePathStaysRelative) {
  makeFile(app, "current");
  support::Child inside([&] { return ::chdir(t.c_str()) == 0 && backedUp("App") == ".//App_bkp1" ? 0 : 1; });
  EXPECT_EQ(inside.wait(), 0);
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, FoldersThatHaveNoNameOfTheirOwnStay) {
  makeFile(app, "current");
  support::Child inside([&] {
    if (::chdir(t.c_str()) != 0) return 1;
    return backedUp(".") == "failed" && backedUp("..") == "failed" && backedUp("../t/.") == "failed" ? 0 : 2;
  });
  EXPECT_EQ(inside.wait(), 0);
  EXPECT_THAT(namesIn(t), ElementsAre("App"));
  EXPECT_THAT(logged(), Contains("FATAL Error Failed to rename the directory.").Times(3));
}

TEST_F(BackupTest, NamesAreBytes) {
  const std::string odd = "line\nbreak\xff";
  makeFile(t + "/" + odd, "current");
  makeFile(t + "/" + odd + "_bkp2");
  EXPECT_EQ(backedUp(t + "/" + odd), t + "//" + odd + "_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre(odd + "_bkp3"));
}

TEST_F(BackupTest, WhatTheWalkHasNotCountedIsDeletedFromTheBackupsPlace) {
  makeFile(app, "current");
  makeLink("nowhere", t + "/App_bkp1");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1"), "current");
  EXPECT_THAT(logged(),
              ElementsAre(started(app), named(t + "//App_bkp1"),
                          "WARN Tring to backup folder, old backup folder already exits, trying to delete folder " + t +
                              "//App_bkp1."));
}

TEST_F(BackupTest, NothingMovesWhereNothingMayMove) {
  makeFile(app, "current");
  makeLink("nowhere", t + "/App_bkp1");
  ASSERT_EQ(::chmod(t.c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return backedUp(app) == "failed"; }));
  EXPECT_THAT(namesIn(t), ElementsAre("App", "App_bkp1"));
  const std::string backup = t + "//App_bkp1";
  EXPECT_THAT(
      logged(),
      ElementsAre(
          started(app), named(backup),
          "WARN Tring to backup folder, old backup folder already exits, trying to delete folder " + backup + ".",
          denied(backup), "WARN Failed to delete backup folder " + backup + ".",
          "INFO NOTE trying to backup ... backup already exists. trying to remove...", denied(backup),
          "ERROR Failed to delete the backup file: " + backup, "FATAL Error Failed to rename the directory."));
}

TEST_F(BackupTest, OlderBackupsThatCannotGoDoNotMatter) {
  makeFile(app, "current");
  makeFolder(t + "/closed");
  makeFile(t + "/closed/App_bkp1");
  makeFile(t + "/App_bkp2");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return backedUp(app) == t + "//App_bkp3"; }));
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3", "closed"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp3"), others, denied(t + "//closed/App_bkp1"),
                                    stays(t + "//closed/App_bkp1")));
}

TEST_F(BackupTest, AFolderThatCannotBeReadIsPassedOver) {
  makeFile(app, "current");
  makeFolder(t + "/closed");
  makeFile(t + "/closed/App_bkp9");
  makeFile(t + "/App_bkp2");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0), 0);
  EXPECT_TRUE(withoutPowers([&] { return backedUp(app) == t + "//App_bkp3"; }));
}

TEST_F(BackupTest, TheWalkNeedsFewDescriptorsAndNoShortPaths) {
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(t, 64 << 20)) return support::kImpossible;
    makeFile(app, "current");
    makeFile(t + "/App_bkp2");
    if (!support::makeDeepFolder(t + "/deep", 3000)) return 1;
    support::limitDescriptors(3);
    return backedUp(app) == t + "//App_bkp3" && platform::exists(t + "/deep") ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(BackupTest, TheSameObjectAgainAndAgainLeavesOneBackup) {
  for (int round = 1; round <= 3; ++round) {
    makeApp(app, std::to_string(round));
    EXPECT_EQ(backedUp(app), t + "//App_bkp" + std::to_string(round));
    EXPECT_THAT(namesIn(t), ElementsAre("App_bkp" + std::to_string(round)));
  }
}

using FolderRenamingTest = BackupTest;

TEST_F(FolderRenamingTest, TakesThePlaceOfWhatIsThere) {
  makeApp(t + "/new", "new");
  makeApp(t + "/old", "old");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_THAT(namesIn(t), ElementsAre("old"));
  EXPECT_EQ(contentsOf(t + "/old/file"), "new");
  EXPECT_THAT(logged(), ElementsAre(removing));
}

TEST_F(FolderRenamingTest, IsQuietWhereNothingIs) {
  makeApp(t + "/new", "new");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_THAT(namesIn(t), ElementsAre("old"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(FolderRenamingTest, TakesThePlaceOfADanglingLink) {
  makeFile(t + "/new", "new");
  makeLink("nowhere", t + "/old");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_EQ(contentsOf(t + "/old"), "new");
}

TEST_F(FolderRenamingTest, SaysWhyItFailed) {
  EXPECT_FALSE(util_renameFolderToFolder(t + "/missing", t + "/new"));
  EXPECT_THAT(logged(),
              ElementsAre("FATAL Failed to rename Error code (2:No such file or directory) the directory from " + t +
                          "/missing to " + t + "/new."));
}

TEST_F(FolderRenamingTest, OntoItselfLosesNothing) {
  makeApp(app, "current");
  makeLink("t", folder / "link");
  for (const std::string& other : {app, t + "//App/", folder / "link/App"})
    EXPECT_TRUE(util_renameFolderToFolder(app, other)) << other;
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_THAT(logged(), ElementsAre(removing, removing, removing));
}

TEST_F(FolderRenamingTest, UnderAnotherSpellingLosesNothing) {
  makeApp(app, "current");
  makeFolder(app + "/sub");
  for (const std::string& from : {app + "/.", app + "/sub/.."}) {
    EXPECT_FALSE(util_renameFolderToFolder(from, app)) << from;
    EXPECT_FALSE(utilRestoreFolder(from, app)) << from;
  }
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  const auto busy = HasSubstr("FATAL Failed to rename Error code (16:Device or resource busy)");
  EXPECT_THAT(logged(), ElementsAre(removing, busy, removing, busy, removing, busy, removing, busy));
}

TEST_F(FolderRenamingTest, OfHardLinksTheSecondNameIsLeft) {
  makeFile(app, "current");
  makeFolder(t + "/other");
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  ASSERT_EQ(::link(app.c_str(), (t + "/other/App").c_str()), 0);
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/link"));
  EXPECT_THAT(namesIn(t), ElementsAre("link", "other"));
  EXPECT_TRUE(utilRestoreFolder(t + "/link", t + "/other/App"));
  EXPECT_THAT(namesIn(t), ElementsAre("other"));
  EXPECT_EQ(contentsOf(t + "/other/App"), "current");
  EXPECT_THAT(logged(), ElementsAre(removing, removing));
}

TEST_F(FolderRenamingTest, OfHardLinksOfALinkOneIsLeft) {
  makeLink("nowhere", app);
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/link"));
  EXPECT_THAT(namesIn(t), ElementsAre("link"));
}

TEST_F(FolderRenamingTest, OfAHardLinkOntoItselfLosesNothing) {
  makeFile(app, "current");
  makeLink("t", folder / "to t");
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  for (const std::string& other : {app, t + "//App", folder / "to t/App"})
    EXPECT_TRUE(util_renameFolderToFolder(app, other)) << other;
  EXPECT_THAT(namesIn(t), ElementsAre("App", "link"));
  EXPECT_THAT(logged(), ElementsAre(removing, removing, removing));
}

// An object that cannot take the place of "App", and why.
struct Hindered {
  const char* from;
  const char* to;
  int error;
};

TEST_F(FolderRenamingTest, WhatCannotTakeThePlaceCostsNothing) {
  makeApp(app, "current");
  makeApp(app + "/App_bkp1", "backup");
  makeFolder(t + "/other");
  makeApp(t + "/other/old", "old");
  makeFile(t + "/file", "file");
  makeFolder(t + "/closed");
  makeLink("App", t + "/to app");
  makeLink("App/App_bkp1", t + "/into app");
  makeLink("to app", t + "/to the link");
  makeLink("to app", t + "/through");
  makeLink("other", t + "/to other");
  const Hindered cases[] = {
      {"missing", "App", ENOENT},           {"file/", "App", ENOTDIR},
      {"missing/x", "App", ENOENT},         {"to app", "App", ELOOP},
      {"into app", "App", ELOOP},           {"to the link", "to app", ELOOP},
      {"through/", "App", ENOTDIR},         {"to other/", "App", ENOTDIR},
      {"to other/.", "App", EBUSY},         {"other/..", "App", EBUSY},
      {"App/App_bkp1", "App", EINVAL},      {"to app/App_bkp1", "App", EINVAL},
      {"to other/old", "to other", EINVAL}, {"other", "other/old", EINVAL},
      {"file", "to other/", ENOTDIR},
  };
  for (const auto& [from, to, error] : cases) {
    forget();
    EXPECT_FALSE(utilRestoreFolder(t + "/" + from, t + "/" + to)) << from;
    EXPECT_THAT(logged(), ElementsAre(removing, "FATAL Failed to rename Error code (" + std::to_string(error) + ":" +
                                                    std::generic_category().message(error) + ") the directory from " +
                                                    t + "/" + from + " to " + t + "/" + to + "."))
        << from;
  }
  EXPECT_THAT(namesIn(t), ElementsAre("App", "closed", "file", "into app", "other", "through", "to app", "to other",
                                      "to the link"));
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_EQ(contentsOf(app + "/App_bkp1/file"), "backup");
  EXPECT_EQ(contentsOf(t + "/other/old/file"), "old");
}

TEST_F(FolderRenamingTest, ALinkThatLeadsElsewhereTakesThePlace) {
  makeApp(app, "current");
  makeApp(t + "/other", "other");
  makeLink("other", t + "/link");
  makeLink("nowhere", t + "/dangling");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/link", app));
  EXPECT_EQ(std::filesystem::read_symlink(app), "other");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/dangling", app));
  EXPECT_EQ(std::filesystem::read_symlink(app), "nowhere");
}

TEST_F(FolderRenamingTest, AnObjectComesFromAnotherFolderAtAnyDepth) {
  makeApp(app, "old");
  makeFolder(t + "/other");
  makeFolder(t + "/other/deep");
  makeApp(t + "/other/deep/new", "new");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/other/deep/new", app));
  EXPECT_EQ(contentsOf(app + "/file"), "new");
  makeApp(t + "/other/deep/old", "old");
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/other/deep/old"));
  EXPECT_EQ(contentsOf(t + "/other/deep/old/file"), "new");
}

TEST_F(FolderRenamingTest, FromAnotherFileSystemCostsNothing) {
  makeApp(app, "current");
  makeFolder(t + "/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(t + "/mount", 1 << 20)) return support::kImpossible;
    makeApp(t + "/mount/new", "new");
    if (util_renameFolderToFolder(t + "/mount/new", app)) return 1;
    return contentsOf(t + "/mount/new/file") == "new" ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_THAT(logged(), ElementsAre(removing,
                                    "FATAL Failed to rename Error code (18:Invalid cross-device link) the directory "
                                    "from " +
                                        t + "/mount/new to " + app + "."));
}

TEST_F(FolderRenamingTest, OutOfAFolderThatMayNotBeChangedCostsNothing) {
  makeApp(app, "current");
  makeFolder(t + "/closed");
  makeApp(t + "/closed/new", "new");
  makeFolder(t + "/open");
  makeApp(t + "/open/new", "new");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0500), 0);
  ASSERT_EQ(::chmod((t + "/open/new").c_str(), 0500), 0);
  for (const char* from : {"/closed/new", "/open/new"})
    EXPECT_TRUE(withoutPowers([&] { return !util_renameFolderToFolder(t + from, app); })) << from;
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  const auto denied = HasSubstr("FATAL Failed to rename Error code (13:Permission denied)");
  EXPECT_THAT(logged(), ElementsAre(removing, denied, removing, denied));
}

TEST_F(FolderRenamingTest, OfWhatOthersKeepCostsNothing) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user has something of somebody else's";
  ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(t.c_str(), 01777), 0);
  makeApp(t + "/theirs", "new");
  makeApp(app, "current");
  ASSERT_EQ(::lchown(app.c_str(), 65534, 65534), 0);
  ASSERT_EQ(::lchown((app + "/file").c_str(), 65534, 65534), 0);
  support::Child other([&] {
    if (::chdir(t.c_str()) != 0 || ::setresuid(65534, 65534, 65534) != 0) return 1;
    return util_renameFolderToFolder("theirs", "App") ? 2 : 0;
  });
  EXPECT_EQ(other.wait(), 0);
  EXPECT_EQ(contentsOf(app + "/file"), "current");
}

TEST_F(FolderRenamingTest, APathEndsAtItsFirstNul) {
  using namespace std::string_literals;
  makeApp(app, "current");
  EXPECT_TRUE(util_renameFolderToFolder(app + "\0"s, app));
  EXPECT_TRUE(util_renameFolderToFolder(app + "\0/x"s, app));
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_EQ(backedUp(app + "\0"s), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1/file"), "current");
  makeApp(t + "/Link", "old");
  EXPECT_TRUE(utilCreateSymlinkFromPathToPath("/opt/real", t + "/Link\0.app"s));
  EXPECT_EQ(std::filesystem::read_symlink(t + "/Link"), "/opt/real");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1", "Link"));
}

TEST_F(FolderRenamingTest, RestoringPutsTheBackupBack) {
  makeApp(app, "current");
  const std::string backup = backedUp(app);
  makeApp(app, "half installed");
  forget();
  EXPECT_TRUE(utilRestoreFolder(backup, app));
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_THAT(namesIn(t), ElementsAre("App"));
  EXPECT_THAT(logged(), ElementsAre(removing));
}

TEST_F(FolderRenamingTest, RestoringNothingFails) {
  EXPECT_FALSE(utilRestoreFolder(t + "/missing", app));
  EXPECT_THAT(logged(), ElementsAre(HasSubstr("FATAL Failed to rename Error code (2:")));
}

class SymlinkTest : public BackupTest {
 protected:
  std::string creating(const std::string& target) const {
    return "INFO Creating symbolic link of " + target + " to folder " + link;
  }
  std::string nothingThere() const { return "INFO NOTE trying to backup ... Source path does not exits. So Success."; }

  const std::string link = t + "/Link";
};

TEST_F(SymlinkTest, StandsWithoutItsExtension) {
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

TEST_F(SymlinkTest, TakesThePlaceOfWhatIsThere) {
  makeApp(link, "old");
  makeFile(t + "/Link.app", "not touched");
  EXPECT_TRUE(utilCreateSymlinkFromPathToPath("/opt/real", t + "/Link.app"));
  EXPECT_EQ(std::filesystem::read_symlink(link), "/opt/real");
  EXPECT_THAT(namesIn(t), ElementsAre("Link", "Link.app"));
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating("/opt/real")));
}

TEST_F(SymlinkTest, MakesAMissingFolderForTheAdministrators) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user gives files away";
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

TEST_F(SymlinkTest, SaysWhenTheObjectCannotBeMovedAside) {
  makeFile(link, "old");
  ASSERT_EQ(::chmod(t.c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return !utilCreateSymlinkFromPathToPath("/opt/real", link); }));
  EXPECT_EQ(contentsOf(link), "old");
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"),
                                    "FATAL Failed to rename Error code (13:Permission denied) the directory from " +
                                        link + " to " + t + "//Link_bkp1.",
                                    "FATAL Error Failed to rename the directory.",
                                    "ERROR Failed in backing up folder " + link + " to folder "));
}

TEST_F(SymlinkTest, MovesTheObjectBackWhenItCannotBeMade) {
  makeApp(link, "old");
  EXPECT_FALSE(utilCreateSymlinkFromPathToPath("", link));
  EXPECT_EQ(contentsOf(link + "/file"), "old");
  EXPECT_THAT(namesIn(t), ElementsAre("Link"));
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating(""),
                                    "ERROR Error Creating symbolic link for path () to path (" + link +
                                        "), Errorno: 2, error msg: No such file or directory"));
}

TEST_F(SymlinkTest, SaysWhenThereIsNothingToMoveBack) {
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

TEST_F(SymlinkTest, SaysWhenTheBackupStays) {
  makeFolder(link);
  makeFolder(link + "/closed");
  makeFile(link + "/closed/file", "old");
  ASSERT_EQ(::chmod((link + "/closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return utilCreateSymlinkFromPathToPath("/opt/real", link); }));
  EXPECT_EQ(std::filesystem::read_symlink(link), "/opt/real");
  EXPECT_EQ(contentsOf(t + "/Link_bkp1/closed/file"), "old");
  EXPECT_THAT(logged(), ElementsAre(started(link), named(t + "//Link_bkp1"), creating("/opt/real"),
                                    denied(t + "//Link_bkp1/closed/file"),
                                    "ERROR Could not delete the backedup folder " + t + "//Link_bkp1"));
}

}  // namespace
