#include "nativeutils/Backup.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>

#include "platform/FileKind.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using nativeutils_test::BackupTest;
using support::contentsOf;
using support::makeFolder;
using support::makeLink;
using support::namesIn;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

TEST_F(BackupTest, StartsWithNumberOne) {
  makeApp(app, "current");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1/file"), "current");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp1")));
}

TEST_F(BackupTest, UsesTheNextNumberAndDeletesOlderBackups) {
  makeApp(app, "current");
  makeFolder(t + "/App_bkp2");
  makeFolder(t + "/App_bkp7");
  EXPECT_EQ(backedUp(app), t + "//App_bkp8");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp8"));
  EXPECT_EQ(contentsOf(t + "/App_bkp8/file"), "current");
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp8"), deletingOthers));
}

TEST_F(BackupTest, IgnoresTheThirdArgument) {
  makeApp(app, "current");
  makeFolder(t + "/App_bkp2");
  std::string backup;
  EXPECT_TRUE(utilBackupFolderIfExits(app, backup, true));
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
}

TEST_F(BackupTest, CountsAnEntryWithoutNumberAsZero) {
  makeApp(app, "current");
  support::writeFile(t + "/App_bkp", "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, SucceedsWithoutAnObject) {
  support::writeFile(t + "/App_bkp3", "");
  EXPECT_EQ(backedUp(app), "");
  EXPECT_EQ(backedUp(""), "");
  EXPECT_EQ(backedUp(folder / "missing/App"), "");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
  const std::string done = "INFO NOTE trying to backup ... Source path does not exits. So Success.";
  EXPECT_THAT(logged(), ElementsAre(started(app), done, started(""), done, started(folder / "missing/App"), done));
}

TEST_F(BackupTest, BacksUpADanglingLink) {
  makeLink("nowhere", app);
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(std::filesystem::read_symlink(t + "/App_bkp1"), "nowhere");
}

TEST_F(BackupTest, BacksUpAFile) {
  support::writeFile(app, "text");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1"), "text");
}

TEST_F(BackupTest, CountsUnrelatedNamesThatContainThePattern) {
  makeApp(app, "current");
  support::writeFile(t + "/OldApp_bkp5", "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp6");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp6"));
}

TEST_F(BackupTest, IgnoresNamesWithoutTheWholePattern) {
  makeApp(app, "current");
  for (const char* name : {"/App_bk9", "/App_9", "/app_bkp9", "/Ap_bkp9", "/App _bkp9"})
    support::writeFile(t + name, "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(namesIn(t).size(), 6u);
}

TEST_F(BackupTest, ReadsNumbersLikeAtoi) {
  const std::pair<const char*, const char*> cases[] = {
      {"App_bkp3x", "App_bkp4"},  {"App_bkp03", "App_bkp4"},     {"App_bkpx", "App_bkp1"},
      {"App_bkp-5", "App_bkp1"},  {"App_bkp+5", "App_bkp6"},     {"App_bkp 5", "App_bkp6"},
      {"App_bkp\n5", "App_bkp6"}, {"App_bkp5_bkp2", "App_bkp3"}, {"App_bkp5_bkp", "App_bkp1"},
  };
  for (const auto& [other, next] : cases) {
    support::writeFile(app, "current");
    support::writeFile(t + "/" + other, "");
    EXPECT_EQ(backedUp(app), t + "//" + next) << other;
    EXPECT_THAT(namesIn(t), ElementsAre(next)) << other;
    ASSERT_EQ(::unlink((t + "/" + next).c_str()), 0);
  }
}

TEST_F(BackupTest, UsesTheSmallestFreeNumberAfterTheLargest) {
  for (const char* other : {"App_bkp2147483647", "App_bkp2147483648", "App_bkp99999999999999999999999"}) {
    support::writeFile(app, "current");
    support::writeFile(t + "/" + other, "");
    support::writeFile(t + "/App_bkp2", "");
    makeLink("nowhere", t + "/App_bkp1");
    EXPECT_EQ(backedUp(app), t + "//App_bkp3") << other;
    EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1", "App_bkp3")) << other;
    EXPECT_EQ(contentsOf(t + "/App_bkp3"), "current");
    ASSERT_EQ(::unlink((t + "/App_bkp1").c_str()), 0);
    ASSERT_EQ(::unlink((t + "/App_bkp3").c_str()), 0);
  }
}

TEST_F(BackupTest, ReachesTheLargestNumber) {
  support::writeFile(app, "current");
  support::writeFile(t + "/App_bkp2147483646", "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp2147483647");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp2147483647"));
}

TEST_F(BackupTest, CountsEntriesAtEveryDepth) {
  makeApp(app, "current");
  makeFolder(t + "/other");
  makeFolder(t + "/other/deeper");
  support::writeFile(t + "/other/deeper/App_bkp4", "");
  support::writeFile(t + "/other/file", "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp5");
  EXPECT_THAT(namesIn(t + "/other/deeper"), IsEmpty());
  EXPECT_THAT(namesIn(t + "/other"), ElementsAre("deeper", "file"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp5"), deletingOthers));
}

TEST_F(BackupTest, LogsEntriesDeletedWithAnOlderBackup) {
  support::writeFile(app, "current");
  makeFolder(t + "/App_bkp2");
  support::writeFile(t + "/App_bkp2/file", "");
  EXPECT_EQ(backedUp(app), t + "//App_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp3"), deletingOthers,
                                    missing(t + "//App_bkp2/file"), remains(t + "//App_bkp2/file")));
}

TEST_F(BackupTest, KeepsTheContentsOfTheObject) {
  makeApp(app, "current");
  support::writeFile(app + "/App_bkp6", "precious");
  EXPECT_EQ(backedUp(app), t + "//App_bkp7");
  EXPECT_EQ(contentsOf(t + "/App_bkp7/App_bkp6"), "precious");
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp7"), deletingOthers,
                                    missing(t + "//App/App_bkp6"), remains(t + "//App/App_bkp6")));
}

TEST_F(BackupTest, IgnoresDanglingLinksAndFollowsNone) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/App_bkp9", "precious");
  support::writeFile(app, "current");
  makeLink("../outside", t + "/link");
  makeLink("../outside", t + "/App_bkp2");
  makeLink("nowhere", t + "/App_bkp8");
  EXPECT_EQ(backedUp(app), t + "//App_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3", "App_bkp8", "link"));
  EXPECT_EQ(contentsOf(folder / "outside/App_bkp9"), "precious");
}

TEST_F(BackupTest, SearchesOtherFileSystems) {
  support::writeFile(app, "current");
  makeFolder(t + "/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(t + "/mount", 1 << 20)) return support::kImpossible;
    support::writeFile(t + "/mount/App_bkp9", "");
    return backedUp(app) == t + "//App_bkp10" && namesIn(t + "/mount").empty() ? 0 : 1;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(BackupTest, FollowsALinkToTheParent) {
  support::writeFile(app, "current");
  support::writeFile(t + "/App_bkp4", "");
  makeLink("t", folder / "link");
  EXPECT_EQ(backedUp(folder / "link/App"), folder / "link//App_bkp5");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp5"));
}

TEST_F(BackupTest, IgnoresExtraSlashes) {
  makeFolder(app);
  EXPECT_EQ(backedUp(t + "///App//"), t + "//App_bkp1");
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, KeepsARelativePathRelative) {
  support::writeFile(app, "current");
  support::Child inside([&] { return ::chdir(t.c_str()) == 0 && backedUp("App") == ".//App_bkp1" ? 0 : 1; });
  EXPECT_EQ(inside.wait(), 0);
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp1"));
}

TEST_F(BackupTest, FailsForDotPaths) {
  support::writeFile(app, "current");
  support::Child inside([&] {
    if (::chdir(t.c_str()) != 0) return 1;
    return backedUp(".") == "failed" && backedUp("..") == "failed" && backedUp("../t/.") == "failed" ? 0 : 2;
  });
  EXPECT_EQ(inside.wait(), 0);
  EXPECT_THAT(namesIn(t), ElementsAre("App"));
  EXPECT_THAT(logged(), Contains("FATAL Error Failed to rename the directory.").Times(3));
}

TEST_F(BackupTest, AcceptsAnyBytesInNames) {
  const std::string unusual = "line\nbreak\xff";
  support::writeFile(t + "/" + unusual, "current");
  support::writeFile(t + "/" + unusual + "_bkp2", "");
  EXPECT_EQ(backedUp(t + "/" + unusual), t + "//" + unusual + "_bkp3");
  EXPECT_THAT(namesIn(t), ElementsAre(unusual + "_bkp3"));
}

TEST_F(BackupTest, DeletesAnUncountedObjectAtTheNewPath) {
  support::writeFile(app, "current");
  makeLink("nowhere", t + "/App_bkp1");
  EXPECT_EQ(backedUp(app), t + "//App_bkp1");
  EXPECT_EQ(contentsOf(t + "/App_bkp1"), "current");
  EXPECT_THAT(logged(),
              ElementsAre(started(app), named(t + "//App_bkp1"),
                          "WARN Tring to backup folder, old backup folder already exits, trying to delete folder " + t +
                              "//App_bkp1."));
}

TEST_F(BackupTest, FailsInAReadOnlyFolder) {
  support::writeFile(app, "current");
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

TEST_F(BackupTest, SucceedsIfAnOlderBackupRemains) {
  support::writeFile(app, "current");
  makeFolder(t + "/closed");
  support::writeFile(t + "/closed/App_bkp1", "");
  support::writeFile(t + "/App_bkp2", "");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0500), 0);
  EXPECT_TRUE(withoutPowers([&] { return backedUp(app) == t + "//App_bkp3"; }));
  EXPECT_THAT(namesIn(t), ElementsAre("App_bkp3", "closed"));
  EXPECT_THAT(logged(), ElementsAre(started(app), named(t + "//App_bkp3"), deletingOthers,
                                    denied(t + "//closed/App_bkp1"), remains(t + "//closed/App_bkp1")));
}

TEST_F(BackupTest, SkipsAnUnreadableFolder) {
  support::writeFile(app, "current");
  makeFolder(t + "/closed");
  support::writeFile(t + "/closed/App_bkp9", "");
  support::writeFile(t + "/App_bkp2", "");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0), 0);
  EXPECT_TRUE(withoutPowers([&] { return backedUp(app) == t + "//App_bkp3"; }));
}

TEST_F(BackupTest, SearchesDeepTreesWithFewDescriptors) {
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(t, 64 << 20)) return support::kImpossible;
    support::writeFile(app, "current");
    support::writeFile(t + "/App_bkp2", "");
    if (!support::makeDeepFolder(t + "/deep", 3000)) return 1;
    support::limitDescriptors(3);
    return backedUp(app) == t + "//App_bkp3" && platform::exists(t + "/deep") ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(BackupTest, LeavesOneBackupAfterRepeatedCalls) {
  for (int round = 1; round <= 3; ++round) {
    makeApp(app, std::to_string(round));
    EXPECT_EQ(backedUp(app), t + "//App_bkp" + std::to_string(round));
    EXPECT_THAT(namesIn(t), ElementsAre("App_bkp" + std::to_string(round)));
  }
}

}  // namespace
