#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include "nativeutils/Files.h"
#include "tests/nativeutils/FileSystemTest.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using support::makeFolder;
using support::makeLink;
using testing::ElementsAre;
using testing::IsEmpty;

class OwnerTest : public nativeutils_test::FileSystemTest {
 protected:
  static uid_t ownerOf(const std::string& path) {
    struct stat object {};
    EXPECT_EQ(::lstat(path.c_str(), &object), 0) << path;
    return object.st_uid;
  }

  void giveAway(const std::string& path) { ASSERT_EQ(::lchown(path.c_str(), 4711, 4711), 0) << path; }

  std::string couldNotChange(const std::string& path, const std::string& why) const {
    return "WARN Failed to change owner and group. Errorno " + why + " for ptah " + path + ".";
  }
  static constexpr const char* kNotPermitted = "(1) error msg(Operation not permitted)";
};

TEST_F(OwnerTest, FailsForAnEmptyPath) {
  EXPECT_FALSE(utilChown(""));
  EXPECT_THAT(logged(), ElementsAre("WARN Failed to open fts stream. ."));
}

TEST_F(OwnerTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  EXPECT_FALSE(utilChown("\0x"s));
  EXPECT_THAT(logged(), ElementsAre("WARN Failed to open fts stream. ."));
}

TEST_F(OwnerTest, LogsAMissingPath) {
  EXPECT_TRUE(utilChown(folder / "missing"));
  EXPECT_THAT(logged(), ElementsAre(couldNotChange(folder / "missing", "(2) error msg(No such file or directory)")));
}

TEST_F(OwnerTest, LogsEveryFailureAndFoldersTwice) {
  makeFolder(folder / "t");
  support::writeFile(folder / "t/file", "");
  support::Child powerless([&] {
    if (!isSuperUser()) return utilChown(folder / "t/") ? 0 : 1;
    giveAway(folder / "t");
    giveAway(folder / "t/file");
    if (::chmod((folder / "t").c_str(), 0755) != 0) return 2;
    return support::dropCapabilities() && utilChown(folder / "t/") ? 0 : 3;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(logged(), ElementsAre(couldNotChange(folder / "t/", kNotPermitted),
                                    couldNotChange(folder / "t/file", kNotPermitted),
                                    couldNotChange(folder / "t/", kNotPermitted)));
}

TEST_F(OwnerTest, ChangesTheWholeTree) {
  if (!isSuperUser()) GTEST_SKIP() << "only the super-user may change owners";
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/file", "");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  makeLink("../outside", folder / "t/link");
  for (const char* path : {"outside", "outside/file", "t", "t/a", "t/a/file", "t/link"})
    giveAway(folder / path);
  EXPECT_TRUE(utilChown(folder / "t"));
  for (const char* path : {"t", "t/a", "t/a/file", "t/link"})
    EXPECT_EQ(ownerOf(folder / path), 0u) << path;
  for (const char* path : {"outside", "outside/file"})
    EXPECT_EQ(ownerOf(folder / path), 4711u) << path;
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(OwnerTest, ChangesALinkItself) {
  if (!isSuperUser()) GTEST_SKIP() << "only the super-user may change owners";
  makeFolder(folder / "t");
  makeLink("t", folder / "link");
  giveAway(folder / "t");
  giveAway(folder / "link");
  EXPECT_TRUE(utilChown(folder / "link"));
  EXPECT_EQ(ownerOf(folder / "link"), 0u);
  EXPECT_EQ(ownerOf(folder / "t"), 4711u);
}

TEST_F(OwnerTest, ChangesAMountPointWithoutItsContents) {
  if (!isSuperUser()) GTEST_SKIP() << "only the super-user may change owners";
  makeFolder(folder / "t");
  makeFolder(folder / "t/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder / "t/mount", 1 << 20)) return support::kImpossible;
    support::writeFile(folder / "t/mount/file", "");
    giveAway(folder / "t/mount");
    giveAway(folder / "t/mount/file");
    if (!utilChown(folder / "t")) return 1;
    return ownerOf(folder / "t/mount") == 0 && ownerOf(folder / "t/mount/file") == 4711 ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(OwnerTest, FollowsNoLinkSwappedWithAFolder) {
  if (!isSuperUser()) GTEST_SKIP() << "only the super-user may change owners";
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/file", "");
  giveAway(folder / "outside");
  giveAway(folder / "outside/file");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  makeLink("../outside", folder / "t/b");
  const support::Swapper swapper(folder / "t/a", folder / "t/b");
  for (int round = 0; round < 20000; ++round)
    ASSERT_TRUE(utilChown(folder / "t"));
  EXPECT_EQ(ownerOf(folder / "outside"), 4711u);
  EXPECT_EQ(ownerOf(folder / "outside/file"), 4711u);
}

}  // namespace
