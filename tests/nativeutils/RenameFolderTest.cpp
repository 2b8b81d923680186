#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>
#include <system_error>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using support::contentsOf;
using support::makeFolder;
using support::makeLink;
using support::namesIn;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

using RenameFolderTest = nativeutils_test::BackupTest;

TEST_F(RenameFolderTest, ReplacesAFolder) {
  makeApp(t + "/new", "new");
  makeApp(t + "/old", "old");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_THAT(namesIn(t), ElementsAre("old"));
  EXPECT_EQ(contentsOf(t + "/old/file"), "new");
  EXPECT_THAT(logged(), ElementsAre(replacing));
}

TEST_F(RenameFolderTest, LogsNothingWithoutAnObjectToReplace) {
  makeApp(t + "/new", "new");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_THAT(namesIn(t), ElementsAre("old"));
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(RenameFolderTest, ReplacesADanglingLink) {
  support::writeFile(t + "/new", "new");
  makeLink("nowhere", t + "/old");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/new", t + "/old"));
  EXPECT_EQ(contentsOf(t + "/old"), "new");
}

TEST_F(RenameFolderTest, LogsTheError) {
  EXPECT_FALSE(util_renameFolderToFolder(t + "/missing", t + "/new"));
  EXPECT_THAT(logged(),
              ElementsAre("FATAL Failed to rename Error code (2:No such file or directory) the directory from " + t +
                          "/missing to " + t + "/new."));
}

TEST_F(RenameFolderTest, ChangesNothingForTheSamePath) {
  makeApp(app, "current");
  makeLink("t", folder / "link");
  for (const std::string& other : {app, t + "//App/", folder / "link/App"})
    EXPECT_TRUE(util_renameFolderToFolder(app, other)) << other;
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_THAT(logged(), ElementsAre(replacing, replacing, replacing));
}

TEST_F(RenameFolderTest, ChangesNothingForAnotherSpelling) {
  makeApp(app, "current");
  makeFolder(app + "/sub");
  for (const std::string& from : {app + "/.", app + "/sub/.."}) {
    EXPECT_FALSE(util_renameFolderToFolder(from, app)) << from;
    EXPECT_FALSE(utilRestoreFolder(from, app)) << from;
  }
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  const auto busy = HasSubstr("FATAL Failed to rename Error code (16:Device or resource busy)");
  EXPECT_THAT(logged(), ElementsAre(replacing, busy, replacing, busy, replacing, busy, replacing, busy));
}

TEST_F(RenameFolderTest, KeepsTheSecondOfTwoHardLinks) {
  support::writeFile(app, "current");
  makeFolder(t + "/other");
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  ASSERT_EQ(::link(app.c_str(), (t + "/other/App").c_str()), 0);
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/link"));
  EXPECT_THAT(namesIn(t), ElementsAre("link", "other"));
  EXPECT_TRUE(utilRestoreFolder(t + "/link", t + "/other/App"));
  EXPECT_THAT(namesIn(t), ElementsAre("other"));
  EXPECT_EQ(contentsOf(t + "/other/App"), "current");
  EXPECT_THAT(logged(), ElementsAre(replacing, replacing));
}

TEST_F(RenameFolderTest, KeepsOneOfTwoHardLinkedSymlinks) {
  makeLink("nowhere", app);
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  EXPECT_TRUE(util_renameFolderToFolder(app, t + "/link"));
  EXPECT_THAT(namesIn(t), ElementsAre("link"));
}

TEST_F(RenameFolderTest, KeepsHardLinksRenamedToThemselves) {
  support::writeFile(app, "current");
  makeLink("t", folder / "to t");
  ASSERT_EQ(::link(app.c_str(), (t + "/link").c_str()), 0);
  for (const std::string& other : {app, t + "//App", folder / "to t/App"})
    EXPECT_TRUE(util_renameFolderToFolder(app, other)) << other;
  EXPECT_THAT(namesIn(t), ElementsAre("App", "link"));
  EXPECT_THAT(logged(), ElementsAre(replacing, replacing, replacing));
}

// A path that cannot be renamed to `to`.
struct InvalidSource {
  const char* from;
  const char* to;
  int error;
};

TEST_F(RenameFolderTest, KeepsTheTargetIfTheSourceIsInvalid) {
  makeApp(app, "current");
  makeApp(app + "/App_bkp1", "backup");
  makeFolder(t + "/other");
  makeApp(t + "/other/old", "old");
  support::writeFile(t + "/file", "file");
  makeFolder(t + "/closed");
  makeLink("App", t + "/to app");
  makeLink("App/App_bkp1", t + "/into app");
  makeLink("to app", t + "/to the link");
  makeLink("to app", t + "/through");
  makeLink("other", t + "/to other");
  const InvalidSource cases[] = {
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
    EXPECT_THAT(logged(), ElementsAre(replacing, "FATAL Failed to rename Error code (" + std::to_string(error) + ":" +
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

TEST_F(RenameFolderTest, ReplacesAFolderByAnUnrelatedLink) {
  makeApp(app, "current");
  makeApp(t + "/other", "other");
  makeLink("other", t + "/link");
  makeLink("nowhere", t + "/dangling");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/link", app));
  EXPECT_EQ(std::filesystem::read_symlink(app), "other");
  EXPECT_TRUE(util_renameFolderToFolder(t + "/dangling", app));
  EXPECT_EQ(std::filesystem::read_symlink(app), "nowhere");
}

TEST_F(RenameFolderTest, MovesBetweenFoldersAtAnyDepth) {
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

// "/.." does not fit behind the path.
TEST_F(RenameFolderTest, MovesFromTheLongestPath) {
  makeApp(app, "old");
  std::string deep = t + "/d";
  ASSERT_TRUE(support::makeDeepFolder(deep, static_cast<int>(4090 - deep.size()) / 2));
  while (deep.size() < 4090)
    deep += "/d";
  support::writeFile(deep + "/n", "new");
  EXPECT_TRUE(util_renameFolderToFolder(deep + "/n", app));
  EXPECT_EQ(contentsOf(app), "new");
}

TEST_F(RenameFolderTest, ParentsNeedNotBeReadable) {
  makeApp(app, "old");
  makeFolder(t + "/closed");
  makeFolder(t + "/closed/inner");
  makeApp(t + "/closed/inner/new", "new");
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0100), 0);
  EXPECT_TRUE(withoutPowers([&] { return util_renameFolderToFolder(t + "/closed/inner/new", app); }));
  ASSERT_EQ(::chmod((t + "/closed").c_str(), 0700), 0);
  EXPECT_EQ(contentsOf(app + "/file"), "new");
}

TEST_F(RenameFolderTest, KeepsTheTargetAcrossFileSystems) {
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
  EXPECT_THAT(logged(), ElementsAre(replacing,
                                    "FATAL Failed to rename Error code (18:Invalid cross-device link) the directory "
                                    "from " +
                                        t + "/mount/new to " + app + "."));
}

TEST_F(RenameFolderTest, KeepsTheTargetAcrossBindMounts) {
  makeApp(app, "current");
  makeFolder(t + "/source");
  makeFolder(t + "/mount");
  makeApp(t + "/source/new", "new");
  const int status = support::withOwnMounts([&] {
    if (::mount((t + "/source").c_str(), (t + "/mount").c_str(), nullptr, MS_BIND, nullptr) != 0)
      return support::kImpossible;
    return util_renameFolderToFolder(t + "/mount/new", app) ? 1 : 0;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_EQ(contentsOf(t + "/source/new/file"), "new");
  EXPECT_THAT(logged(), ElementsAre(replacing, HasSubstr("FATAL Failed to rename Error code (18:")));
}

// An exchange of the two folders would need write access to the replaced one, whose ".." changes.
TEST_F(RenameFolderTest, ReplacesAReadOnlyFolderFromAnotherFolder) {
  makeFolder(app);
  ASSERT_EQ(::chmod(app.c_str(), 0500), 0);
  makeFolder(t + "/other");
  makeApp(t + "/other/new", "new");
  EXPECT_TRUE(withoutPowers([&] { return util_renameFolderToFolder(t + "/other/new", app); }));
  EXPECT_EQ(contentsOf(app + "/file"), "new");
}

TEST_F(RenameFolderTest, KeepsBothObjectsIfTheTargetIsUndeletable) {
  makeFolder(app);
  makeApp(app + "/closed", "current");
  ASSERT_EQ(::chmod((app + "/closed").c_str(), 0500), 0);
  makeApp(t + "/new", "new");
  EXPECT_TRUE(withoutPowers([&] { return !util_renameFolderToFolder(t + "/new", app); }));
  EXPECT_THAT(namesIn(t), ElementsAre("App", "new"));
  EXPECT_EQ(contentsOf(app + "/closed/file"), "current");
  EXPECT_EQ(contentsOf(t + "/new/file"), "new");
  EXPECT_THAT(logged(),
              ElementsAre(replacing, denied(app + "/closed/file"), "ERROR Failed to delete the backup file: " + app));
}

TEST_F(RenameFolderTest, KeepsTheTargetOfAReadOnlySource) {
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
  EXPECT_THAT(logged(), ElementsAre(replacing, denied, replacing, denied));
}

TEST_F(RenameFolderTest, KeepsTheTargetIfTheSourceIsSticky) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
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

TEST_F(RenameFolderTest, EndsPathsAtTheFirstNul) {
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

TEST_F(RenameFolderTest, RestoresABackup) {
  makeApp(app, "current");
  const std::string backup = backedUp(app);
  makeApp(app, "half installed");
  forget();
  EXPECT_TRUE(utilRestoreFolder(backup, app));
  EXPECT_EQ(contentsOf(app + "/file"), "current");
  EXPECT_THAT(namesIn(t), ElementsAre("App"));
  EXPECT_THAT(logged(), ElementsAre(replacing));
}

TEST_F(RenameFolderTest, FailsToRestoreAMissingBackup) {
  EXPECT_FALSE(utilRestoreFolder(t + "/missing", app));
  EXPECT_THAT(logged(), ElementsAre(HasSubstr("FATAL Failed to rename Error code (2:")));
}

}  // namespace
