#include "platform/TreeRemoval.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <optional>
#include <string>

#include "platform/Failure.h"
#include "platform/FileKind.h"
#include "platform/UniqueFd.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using support::makeFolder;
using support::makeLink;
using support::makeSmallTree;
using support::namesIn;
using testing::ElementsAre;

class TreeRemovalTest : public testing::Test {
 protected:
  const support::TemporaryFolder folder;
};

TEST_F(TreeRemovalTest, RemovesEverythingAndFollowsNoLink) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  makeSmallTree(folder / "t");
  makeLink("../outside", folder / "t/to outside");
  makeLink(folder / "outside/precious", folder / "t/a/to precious");
  EXPECT_EQ(platform::removeTree(folder / "t"), std::nullopt);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("outside"));
  EXPECT_THAT(namesIn(folder / "outside"), ElementsAre("precious"));
}

TEST_F(TreeRemovalTest, RemovesALinkItselfDespiteATrailingSlash) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  for (const char* path : {"link", "link/", "link///"}) {
    makeLink("outside", folder / "link");
    EXPECT_EQ(platform::removeTree(folder / path), std::nullopt);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("outside"));
    EXPECT_THAT(namesIn(folder / "outside"), ElementsAre("precious"));
  }
}

TEST_F(TreeRemovalTest, FailsForAMissingPath) {
  EXPECT_EQ(platform::removeTree(folder / "missing"), "No such file or directory: " + folder / "missing");
}

TEST_F(TreeRemovalTest, RefusesTheRootAndDotPaths) {
  support::writeFile(folder / "file", "");
  support::Child inside([&] {
    if (::chdir(folder.path().c_str()) != 0) return 1;
    for (const char* path : {".", "..", "./", "../", "./.", "x/..", "/", "//", "/..", "/."})
      if (!platform::removeTree(path)) return 2;
    return 0;
  });
  EXPECT_EQ(inside.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("file"));
}

TEST_F(TreeRemovalTest, RemovesDeepTreesWithFewDescriptors) {
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder.path(), 64 << 20)) return support::kImpossible;
    if (!support::makeDeepFolder(folder / "deep", 5000)) return 1;
    support::limitDescriptors(3);
    return !platform::removeTree(folder / "deep") && !platform::exists(folder / "deep") ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(TreeRemovalTest, LeavesNoDescriptorOpen) {
  const auto next = [] { return platform::UniqueFd(::open("/dev/null", O_RDONLY)).get(); };
  const int before = next();
  makeSmallTree(folder / "t");
  ASSERT_TRUE(support::makeDeepFolder(folder / "t/deep", 100));
  EXPECT_EQ(platform::removeTree(folder / "t"), std::nullopt);
  EXPECT_EQ(next(), before);
}

TEST_F(TreeRemovalTest, ContinuesAfterAFailureAndReturnsTheFirst) {
  makeFolder(folder / "t");
  for (const char* name : {"a", "b", "c"}) {
    makeFolder(folder / "t/" + name);
    support::writeFile(folder / "t/" + name + "/file", "");
  }
  ASSERT_EQ(::chmod((folder / "t/b").c_str(), 0500), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    return platform::removeTree(folder / "t") == "Permission denied: " + folder / "t/b/file" ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder / "t"), ElementsAre("b"));
}

TEST_F(TreeRemovalTest, RemovesAnUnreadableFolderOnlyIfEmpty) {
  makeFolder(folder / "empty");
  makeFolder(folder / "full");
  makeFolder(folder / "full/a");
  ASSERT_EQ(::chmod((folder / "empty").c_str(), 0), 0);
  ASSERT_EQ(::chmod((folder / "full").c_str(), 0), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    if (platform::removeTree(folder / "empty")) return 2;
    return platform::removeTree(folder / "full") == "Permission denied: " + folder / "full" ? 0 : 3;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("full"));
}

TEST_F(TreeRemovalTest, KeepsTheContentsOfAnUndeletableFolder) {
  makeFolder(folder / "closed");
  makeFolder(folder / "closed/t");
  support::writeFile(folder / "closed/t/file", "");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    return platform::removeTree(folder / "closed/t") == "Permission denied: " + folder / "closed/t" ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder / "closed/t"), ElementsAre("file"));
}

TEST_F(TreeRemovalTest, SkipsAMountPoint) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  makeFolder(folder / "t");
  makeFolder(folder / "t/mount");
  makeFolder(folder / "t/other");
  const int status = support::withOwnMounts([&] {
    if (::mount((folder / "outside").c_str(), (folder / "t/mount").c_str(), nullptr, MS_BIND, nullptr) != 0)
      return support::kImpossible;
    if (platform::removeTree(folder / "t") != "Device or resource busy: " + folder / "t/mount") return 1;
    return platform::removeTree(folder / "t/mount") ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
  EXPECT_THAT(namesIn(folder / "t"), ElementsAre("mount"));
  EXPECT_THAT(namesIn(folder / "outside"), ElementsAre("precious"));
}

TEST_F(TreeRemovalTest, FollowsNoLinkSwappedWithAFolder) {
  makeFolder(folder / "outside");
  makeFolder(folder / "outside/folder");
  support::writeFile(folder / "outside/folder/precious", "");
  const support::Swapper swapper(folder / "t/a", folder / "t/b");
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
  for (int rounds = 0; rounds <= 10 || std::chrono::steady_clock::now() < end; ++rounds) {
    makeFolder(folder / "t");
    makeFolder(folder / "t/a");
    makeFolder(folder / "t/a/folder");
    for (int i = 0; i < 20; ++i)
      support::writeFile(folder / "t/a/folder/" + std::to_string(i), "");
    makeLink("../outside", folder / "t/b");
    while (platform::removeTree(folder / "t")) {
    }
    ASSERT_THAT(namesIn(folder / "outside/folder"), ElementsAre("precious"));
  }
}

TEST_F(TreeRemovalTest, SucceedsInTwoProcessesAtOnce) {
  for (int round = 0; round < 10; ++round) {
    makeFolder(folder / "t");
    for (int i = 0; i < 20; ++i) {
      makeFolder(folder / "t/" + std::to_string(i));
      for (int j = 0; j < 10; ++j)
        support::writeFile(folder / "t/" + std::to_string(i) + "/" + std::to_string(j), "");
    }
    const support::Shared<std::atomic<int>> ready;
    const auto remove = [&] {
      ++*ready;
      while (*ready < 2) {
      }
      const platform::Failure failure = platform::removeTree(folder / "t");
      return failure && failure != "No such file or directory: " + folder / "t" ? 1 : 0;
    };
    support::Child one(remove), other(remove);
    EXPECT_EQ(one.wait() + other.wait(), 0);
    ASSERT_TRUE(namesIn(folder.path()).empty());
  }
}

TEST_F(TreeRemovalTest, RemovesObjectsExceptFoldersWithContents) {
  makeSmallTree(folder / "t");
  EXPECT_EQ(platform::removeObject(folder / "t/a/empty"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/to a"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/pipe"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/a"), "Directory not empty: " + folder / "t/a");
  EXPECT_TRUE(platform::exists(folder / "t/a/file"));
}

TEST_F(TreeRemovalTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  makeSmallTree(folder / "t");
  EXPECT_EQ(platform::removeTree(folder / "t/a/..\0"s), "Invalid argument: " + folder / "t/a/..");
  EXPECT_EQ(platform::removeTree(folder / "missing\0"s), "No such file or directory: " + folder / "missing");
  EXPECT_EQ(platform::removeObject(folder / "t/a\0"s), "Directory not empty: " + folder / "t/a");
  EXPECT_EQ(platform::removeTree(folder / "t\0/a"s), std::nullopt);
  EXPECT_THAT(namesIn(folder.path()), testing::IsEmpty());
}

}  // namespace
