#include "platform/FileTree.h"

#include <fcntl.h>
#include <fts.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <functional>

#include "platform/Failure.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/TreeRemoval.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Powers.h"
#include "tests/support/Trees.h"

namespace {

using platform::EntryKind;
using platform::Mounts;
using platform::TreeEntry;
using support::namesIn;
using testing::Contains;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::Not;
using testing::UnorderedElementsAre;

void makeFolder(const std::string& path) {
  ASSERT_EQ(::mkdir(path.c_str(), 0700), 0) << path;
}

void makeLink(const std::string& target, const std::string& path) {
  ASSERT_EQ(::symlink(target.c_str(), path.c_str()), 0) << path;
}

// Writes down what it is shown: "+" an entry, "-" a folder left, "!" one that could not be read.
class Diary : public platform::TreeVisitor {
 public:
  bool enter(const TreeEntry& entry) override {
    paths.push_back("+" + entry.path);
    relative.emplace_back(entry.relative);
    if (meanwhile) meanwhile(entry);
    return entry.kind == EntryKind::folder;
  }
  void miss(const TreeEntry& entry, int error) override {
    paths.push_back("!" + entry.path);
    errors.push_back(error);
  }
  void leave(const TreeEntry& entry) override {
    paths.push_back("-" + entry.path);
    if (!isIn(entry.folder, platform::parentFolder(entry.path))) astray.push_back(entry.path);
  }

  std::vector<std::string> paths;
  std::vector<std::string> relative;
  std::vector<int> errors;
  std::vector<std::string> astray;  // left in another folder than the one at its path
  std::function<void(const TreeEntry&)> meanwhile;

 private:
  // Also when there is no such folder any more.
  static bool isIn(int open, const std::string& folder) {
    struct stat one {};
    struct stat other {};
    if (open == AT_FDCWD || ::stat(folder.c_str(), &other) != 0) return true;
    return ::fstat(open, &one) == 0 && one.st_dev == other.st_dev && one.st_ino == other.st_ino;
  }
};

Diary diaryOf(const std::string& root, Mounts mounts = Mounts::entered) {
  Diary diary;
  platform::walkTree(root, diary, mounts);
  return diary;
}

// Of every entry that the system's own walk shows, how often.
std::vector<std::string> metByFts(std::string root) {
  char* const roots[] = {root.data(), nullptr};
  FTS* const walk = ::fts_open(roots, FTS_NOCHDIR | FTS_NOSTAT | FTS_PHYSICAL | FTS_XDEV, nullptr);
  std::vector<std::string> paths;
  while (const FTSENT* const entry = ::fts_read(walk))
    paths.emplace_back(entry->fts_path);
  ::fts_close(walk);
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::vector<std::string> metByUs(const std::string& root) {
  std::vector<std::string> paths;
  for (const std::string& line : diaryOf(root, Mounts::passedOver).paths)
    if (line[0] != '!') paths.push_back(line.substr(1));
  std::sort(paths.begin(), paths.end());
  return paths;
}

class FileTreeTest : public testing::Test {
 protected:
  void makeSmallTree(const std::string& top) {
    makeFolder(top);
    makeFolder(top + "/a");
    makeFolder(top + "/a/empty");
    makeFolder(top + "/.hidden");
    support::writeFile(top + "/a/file", "");
    support::writeFile(top + "/.hidden/line\nbreak", "");
    support::writeFile(top + "/\xff\xfe", "");
    makeLink("a", top + "/to a");
    makeLink("nowhere", top + "/dangling");
    makeLink("loop", top + "/loop");
    makeLink("..", top + "/a/up");
    ASSERT_EQ(::mkfifo((top + "/pipe").c_str(), 0600), 0);
  }

  const support::TemporaryFolder folder;
};

TEST_F(FileTreeTest, AWalkShowsEveryEntryAndFoldersTwice) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  const Diary diary = diaryOf(folder / "t");
  EXPECT_THAT(diary.paths, ElementsAre("+" + folder / "t", "+" + folder / "t/a", "+" + folder / "t/a/file",
                                       "-" + folder / "t/a", "-" + folder / "t"));
  EXPECT_THAT(diary.relative, ElementsAre("", "a", "a/file"));
}

TEST_F(FileTreeTest, AWalkShowsWhatTheSystemsOwnShows) {
  makeSmallTree(folder / "t");
  for (const std::string& root : {folder / "t", folder / "t/", folder / "t//", folder / "t/to a", folder / "t/to a/",
                                  folder / "t/dangling", folder / "t/pipe", folder / "missing", folder / "t/a/empty"}) {
    EXPECT_EQ(metByUs(root), metByFts(root)) << root;
  }
}

TEST_F(FileTreeTest, AWalkShowsAnUnreadableFolderAsTheSystemsOwnDoes) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/closed");
  ASSERT_EQ(::chmod((folder / "t/closed").c_str(), 0), 0);
  support::Child powerless([&] {
    if (!support::giveUpPowers()) return 1;
    return metByUs(folder / "t") == metByFts(folder / "t") && metByUs(folder / "t").size() == 4 ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
}

TEST_F(FileTreeTest, AWalkCanStayOnItsFileSystemAsTheSystemsOwnDoes) {
  makeSmallTree(folder / "t");
  makeFolder(folder / "t/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder / "t/mount", 1 << 20)) return support::kImpossible;
    support::writeFile(folder / "t/mount/file", "");
    if (metByUs(folder / "t") != metByFts(folder / "t")) return 1;
    if (metByUs(folder / "t/mount") != metByFts(folder / "t/mount")) return 2;
    return diaryOf(folder / "t").paths.size() == diaryOf(folder / "t", Mounts::passedOver).paths.size() + 1 ? 0 : 3;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(FileTreeTest, AWalkIsNotLedAwayByALinkThatComesInAFoldersPlace) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  Diary diary;
  diary.meanwhile = [&](const TreeEntry& entry) {
    if (entry.relative != "a") return;
    ASSERT_EQ(::rename((folder / "t/a").c_str(), (folder / "moved").c_str()), 0);
    makeLink("../outside", folder / "t/a");
  };
  platform::walkTree(folder / "t", diary, Mounts::entered);
  EXPECT_THAT(diary.paths, ElementsAre("+" + folder / "t", "+" + folder / "t/a", "!" + folder / "t/a",
                                       "-" + folder / "t/a", "-" + folder / "t"));
}

TEST_F(FileTreeTest, AWalkGoesOnWhereAFolderHasVanished) {
  makeFolder(folder / "t");
  for (const char* name : {"t/a", "t/b", "t/c"})
    makeFolder(folder / name);
  Diary diary;
  diary.meanwhile = [&](const TreeEntry& entry) {
    if (entry.relative == "b") ::rmdir(entry.path.c_str());
  };
  platform::walkTree(folder / "t", diary, Mounts::entered);
  EXPECT_THAT(diary.errors, ElementsAre(ENOENT));
  EXPECT_THAT(diary.relative, UnorderedElementsAre("", "a", "b", "c"));
}

// Deep enough that the walk has closed the folders above it.
constexpr int deep = 60;

std::string deepName(int depth) {
  std::string name = "deep";
  for (int i = 0; i < depth; ++i)
    name += "/d";
  return name;
}

class MovedFolderTest : public FileTreeTest {
 protected:
  // Walks, and lets the deep folder at `depth` be moved to "elsewhere/moved" while its innermost is looked at.
  Diary walkWhileMoving(int depth, const std::function<void(const std::string&)>& replace = {}) {
    makeFolder(folder / "t");
    makeFolder(folder / "elsewhere");
    support::writeFile(folder / "elsewhere/precious", "");
    EXPECT_TRUE(support::makeDeepFolder(folder / "t/deep", deep));
    makeFolder(folder / "t/other");
    Diary diary;
    diary.meanwhile = [this, depth, replace](const TreeEntry& entry) {
      if (entry.relative != deepName(deep)) return;
      const std::string from = folder / ("t/" + deepName(depth));
      ASSERT_EQ(::rename(from.c_str(), (folder / "elsewhere/moved").c_str()), 0);
      if (replace) replace(from);
    };
    platform::walkTree(folder / "t", diary, Mounts::entered);
    return diary;
  }

  std::string line(char sign, const std::string& relative) const { return sign + (folder / ("t/" + relative)); }
};

TEST_F(MovedFolderTest, AWalkFindsItsWayBackAndLeavesTheMovedFolderToItself) {
  const Diary diary = walkWhileMoving(3);
  EXPECT_THAT(diary.paths, IsSupersetOf({line('-', deepName(deep)), line('-', deepName(3)), line('-', "deep"),
                                         line('-', "other"), "-" + folder / "t"}));
  EXPECT_THAT(diary.relative, Not(Contains("precious")));
}

TEST_F(MovedFolderTest, AWalkFindsItsWayBackPastALinkInItsPlace) {
  const Diary diary = walkWhileMoving(3, [&](const std::string& path) { makeLink(folder / "elsewhere", path); });
  EXPECT_THAT(diary.paths, IsSupersetOf({line('-', deepName(3)), line('-', "deep"), line('-', "other")}));
  EXPECT_THAT(diary.relative, Not(Contains(testing::HasSubstr("precious"))));
}

TEST_F(MovedFolderTest, AWalkDoesNotTakeOtherFoldersForThoseItCameThrough) {
  const Diary diary = walkWhileMoving(3, [&](const std::string&) {
    ASSERT_EQ(::rename((folder / "t/deep").c_str(), (folder / "elsewhere/deep").c_str()), 0);
    EXPECT_TRUE(support::makeDeepFolder(folder / "t/deep", 3));
  });
  EXPECT_THAT(diary.paths, IsSupersetOf({line('-', deepName(4)), line('-', "deep"), line('-', "other")}));
  EXPECT_THAT(diary.paths, Not(Contains(line('-', deepName(3)))));
}

TEST_F(MovedFolderTest, AWalkFindsItsWayBackFromAnyMovedFolder) {
  for (int depth = 0; depth <= deep; depth += 6) {
    const Diary diary = walkWhileMoving(depth);
    EXPECT_THAT(diary.paths, IsSupersetOf({line('-', deepName(depth)), line('-', "other"), "-" + folder / "t"}));
    EXPECT_THAT(diary.astray, testing::IsEmpty());
    EXPECT_EQ(platform::removeTree(folder / "t"), std::nullopt);
    EXPECT_EQ(platform::removeTree(folder / "elsewhere"), std::nullopt);
  }
}

TEST_F(FileTreeTest, AWalkNeedsFewDescriptors) {
  makeSmallTree(folder / "t");
  ASSERT_TRUE(support::makeDeepFolder(folder / "t/deep", 100));
  const std::vector<std::string> all = diaryOf(folder / "t").paths;
  for (const unsigned more : {3u, 4u, 5u, 10u}) {
    support::Child poor([&] {
      support::limitDescriptors(more);
      return diaryOf(folder / "t").paths == all ? 0 : 1;
    });
    EXPECT_EQ(poor.wait(), 0) << more;
  }
}

TEST_F(FileTreeTest, RemovalTakesEverythingAndFollowsNoLink) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  makeSmallTree(folder / "t");
  makeLink("../outside", folder / "t/to outside");
  makeLink(folder / "outside/precious", folder / "t/a/to precious");
  EXPECT_EQ(platform::removeTree(folder / "t"), std::nullopt);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("outside"));
  EXPECT_THAT(namesIn(folder / "outside"), ElementsAre("precious"));
}

TEST_F(FileTreeTest, RemovalOfALinkTakesTheLinkEvenWithASlash) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  for (const char* path : {"link", "link/", "link///"}) {
    makeLink("outside", folder / "link");
    EXPECT_EQ(platform::removeTree(folder / path), std::nullopt);
    EXPECT_THAT(namesIn(folder.path()), ElementsAre("outside"));
    EXPECT_THAT(namesIn(folder / "outside"), ElementsAre("precious"));
  }
}

TEST_F(FileTreeTest, RemovalOfNothingFails) {
  EXPECT_EQ(platform::removeTree(folder / "missing"), "No such file or directory: " + folder / "missing");
}

TEST_F(FileTreeTest, RemovalRefusesWhatCannotGo) {
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

TEST_F(FileTreeTest, RemovalKnowsNoLimitOfDepthOrDescriptors) {
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder.path(), 64 << 20)) return support::kImpossible;
    if (!support::makeDeepFolder(folder / "deep", 5000)) return 1;
    support::limitDescriptors(3);
    return !platform::removeTree(folder / "deep") && !platform::exists(folder / "deep") ? 0 : 2;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(FileTreeTest, RemovalKeepsNoDescriptor) {
  const auto next = [] { return platform::UniqueFd(::open("/dev/null", O_RDONLY)).get(); };
  const int before = next();
  makeSmallTree(folder / "t");
  ASSERT_TRUE(support::makeDeepFolder(folder / "t/deep", 100));
  EXPECT_EQ(platform::removeTree(folder / "t"), std::nullopt);
  EXPECT_EQ(next(), before);
}

TEST_F(FileTreeTest, RemovalGoesOnAfterAFailureAndTellsTheFirst) {
  makeFolder(folder / "t");
  for (const char* name : {"a", "b", "c"}) {
    makeFolder(folder / "t/" + name);
    support::writeFile(folder / "t/" + name + "/file", "");
  }
  ASSERT_EQ(::chmod((folder / "t/b").c_str(), 0500), 0);
  support::Child powerless([&] {
    if (!support::giveUpPowers()) return 1;
    return platform::removeTree(folder / "t") == "Permission denied: " + folder / "t/b/file" ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder / "t"), ElementsAre("b"));
}

TEST_F(FileTreeTest, RemovalOfAnUnreadableFolderNeedsItToBeEmpty) {
  makeFolder(folder / "empty");
  makeFolder(folder / "full");
  makeFolder(folder / "full/a");
  ASSERT_EQ(::chmod((folder / "empty").c_str(), 0), 0);
  ASSERT_EQ(::chmod((folder / "full").c_str(), 0), 0);
  support::Child powerless([&] {
    if (!support::giveUpPowers()) return 1;
    if (platform::removeTree(folder / "empty")) return 2;
    return platform::removeTree(folder / "full") == "Permission denied: " + folder / "full" ? 0 : 3;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder.path()), ElementsAre("full"));
}

TEST_F(FileTreeTest, AFolderThatCannotGoKeepsWhatIsInIt) {
  makeFolder(folder / "closed");
  makeFolder(folder / "closed/t");
  support::writeFile(folder / "closed/t/file", "");
  ASSERT_EQ(::chmod((folder / "closed").c_str(), 0500), 0);
  support::Child powerless([&] {
    if (!support::giveUpPowers()) return 1;
    return platform::removeTree(folder / "closed/t") == "Permission denied: " + folder / "closed/t" ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_THAT(namesIn(folder / "closed/t"), ElementsAre("file"));
}

TEST_F(FileTreeTest, RemovalPassesOverAMountPoint) {
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

TEST_F(FileTreeTest, RemovalIsNotLedAwayByWhoSwapsAFolderAndALink) {
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

TEST_F(FileTreeTest, TwoWhoRemoveTheSameTreeBothSucceed) {
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

TEST_F(FileTreeTest, AnObjectIsRemovedButNoFolderThatHoldsSomething) {
  makeSmallTree(folder / "t");
  EXPECT_EQ(platform::removeObject(folder / "t/a/empty"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/to a"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/pipe"), std::nullopt);
  EXPECT_EQ(platform::removeObject(folder / "t/a"), "Directory not empty: " + folder / "t/a");
  EXPECT_TRUE(platform::exists(folder / "t/a/file"));
}

TEST_F(FileTreeTest, EntriesAreListedWithTheirKinds) {
  makeSmallTree(folder / "t");
  std::vector<std::string> listed;
  for (const platform::FolderEntry& entry : platform::entriesOf(folder / "t"))
    listed.push_back((entry.kind == EntryKind::folder ? "/" : entry.kind == EntryKind::link ? "@" : "-") + entry.name);
  EXPECT_THAT(listed, UnorderedElementsAre("/a", "/.hidden", "-\xff\xfe", "@to a", "@dangling", "@loop", "-pipe"));
  EXPECT_EQ(platform::entriesOf(folder / "t/to a").size(), 3u);
  EXPECT_TRUE(platform::entriesOf(folder / "t/pipe").empty());
  EXPECT_TRUE(platform::entriesOf(folder / "missing").empty());
}

TEST_F(FileTreeTest, AnEntryIsKnownByItsFolderAndItsName) {
  makeSmallTree(folder / "t");
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a/file", folder / "t/to a/file"));
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a", folder / "t//./a/"));
  EXPECT_TRUE(platform::isSameEntry(folder / "t/missing", folder / "t/a/../missing"));
  EXPECT_FALSE(platform::isSameEntry(folder / "t/a/file", folder / "t/file"));
  EXPECT_FALSE(platform::isSameEntry(folder / "t/a/file", folder / "t/a/other"));
  EXPECT_FALSE(platform::isSameEntry(folder / "missing/a", folder / "missing/a"));
}

TEST_F(FileTreeTest, APathEndsAtItsFirstNul) {
  using namespace std::string_literals;
  makeSmallTree(folder / "t");
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a\0/x"s, folder / "t/a"));
  EXPECT_TRUE(platform::isRemovedWith(folder / "t/a\0/x"s, folder / "t/a/."));
  EXPECT_EQ(diaryOf(folder / "t\0"s).paths, diaryOf(folder / "t").paths);
  EXPECT_EQ(platform::removeTree(folder / "t/a/..\0"s), "Invalid argument: " + folder / "t/a/..");
  EXPECT_EQ(platform::removeTree(folder / "missing\0"s), "No such file or directory: " + folder / "missing");
  EXPECT_EQ(platform::removeObject(folder / "t/a\0"s), "Directory not empty: " + folder / "t/a");
  EXPECT_EQ(platform::removeTree(folder / "t\0/a"s), std::nullopt);
  EXPECT_THAT(namesIn(folder.path()), testing::IsEmpty());
}

TEST_F(FileTreeTest, ALinkIsKnownByWhatItLeadsTo) {
  makeSmallTree(folder / "t");
  EXPECT_TRUE(platform::isLinkTo(folder / "t/to a", folder / "t/a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/a", folder / "t/a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/to a", folder / "t/to a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/dangling", folder / "t/dangling"));
}

}  // namespace
