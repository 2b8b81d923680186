#include "platform/FileTree.h"

#include <fcntl.h>
#include <fts.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/Path.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using platform::EntryKind;
using platform::Mounts;
using platform::TreeEntry;
using support::makeFolder;
using support::makeLink;
using support::makeSmallTree;
using testing::Contains;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::UnorderedElementsAre;

// Records the calls: "+" for `enter`, "-" for `leave`, "!" for `onError`, and the path.
class Recorder : public platform::TreeVisitor {
 public:
  bool enter(const TreeEntry& entry) override {
    record('+', entry);
    relative.emplace_back(entry.relative);
    if (onEnter) onEnter(entry);
    return entry.kind == EntryKind::kFolder;
  }
  void onError(const TreeEntry& entry, int error) override {
    calls.push_back("!" + entry.path);
    errors.push_back(error);
  }
  void leave(const TreeEntry& entry) override { record('-', entry); }

  std::vector<std::string> calls;
  std::vector<std::string> relative;
  std::vector<int> errors;
  std::vector<std::string> outside;  // entries in another folder than the parent of their path
  std::function<void(const TreeEntry&)> onEnter;

 private:
  void record(char call, const TreeEntry& entry) {
    calls.push_back(call + entry.path);
    if (!isIn(entry.folder, platform::parentFolder(entry.path))) outside.push_back(calls.back());
  }

  // True for a path that does not exist any more.
  static bool isIn(int open, const std::string& folder) {
    struct stat one {};
    struct stat other {};
    if (open == AT_FDCWD || ::stat(folder.c_str(), &other) != 0) return true;
    return ::fstat(open, &one) == 0 && one.st_dev == other.st_dev && one.st_ino == other.st_ino;
  }
};

Recorder walked(const std::string& root, Mounts mounts = Mounts::kEnter) {
  Recorder recorder;
  platform::walkTree(root, recorder, mounts);
  return recorder;
}

// The sorted paths that `fts` returns, folders twice.
std::vector<std::string> pathsByFts(std::string root) {
  char* const roots[] = {root.data(), nullptr};
  FTS* const walk = ::fts_open(roots, FTS_NOCHDIR | FTS_NOSTAT | FTS_PHYSICAL | FTS_XDEV, nullptr);
  std::vector<std::string> paths;
  while (const FTSENT* const entry = ::fts_read(walk))
    paths.emplace_back(entry->fts_path);
  ::fts_close(walk);
  std::sort(paths.begin(), paths.end());
  return paths;
}

std::vector<std::string> pathsByWalk(const std::string& root) {
  std::vector<std::string> paths;
  for (const std::string& call : walked(root, Mounts::kSkip).calls)
    if (call[0] != '!') paths.push_back(call.substr(1));
  std::sort(paths.begin(), paths.end());
  return paths;
}

class FileTreeTest : public testing::Test {
 protected:
  const support::TemporaryFolder folder;
};

TEST_F(FileTreeTest, VisitsEveryEntryAndFoldersTwice) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  support::writeFile(folder / "t/a/file", "");
  const Recorder recorder = walked(folder / "t");
  EXPECT_THAT(recorder.calls, ElementsAre("+" + folder / "t", "+" + folder / "t/a", "+" + folder / "t/a/file",
                                          "-" + folder / "t/a", "-" + folder / "t"));
  EXPECT_THAT(recorder.relative, ElementsAre("", "a", "a/file"));
}

TEST_F(FileTreeTest, VisitsTheSameEntriesAsFts) {
  makeSmallTree(folder / "t");
  for (const std::string& root : {folder / "t", folder / "t/", folder / "t//", folder / "t/to a", folder / "t/to a/",
                                  folder / "t/dangling", folder / "t/pipe", folder / "missing", folder / "t/a/empty"}) {
    EXPECT_EQ(pathsByWalk(root), pathsByFts(root)) << root;
  }
}

TEST_F(FileTreeTest, VisitsAnUnreadableFolderAsFtsDoes) {
  makeFolder(folder / "t");
  makeFolder(folder / "t/closed");
  ASSERT_EQ(::chmod((folder / "t/closed").c_str(), 0), 0);
  support::Child powerless([&] {
    if (!support::dropCapabilities()) return 1;
    return pathsByWalk(folder / "t") == pathsByFts(folder / "t") && pathsByWalk(folder / "t").size() == 4 ? 0 : 2;
  });
  EXPECT_EQ(powerless.wait(), 0);
}

TEST_F(FileTreeTest, SkipsMountsAsFtsDoes) {
  makeSmallTree(folder / "t");
  makeFolder(folder / "t/mount");
  const int status = support::withOwnMounts([&] {
    if (!support::mountMemory(folder / "t/mount", 1 << 20)) return support::kImpossible;
    support::writeFile(folder / "t/mount/file", "");
    if (pathsByWalk(folder / "t") != pathsByFts(folder / "t")) return 1;
    if (pathsByWalk(folder / "t/mount") != pathsByFts(folder / "t/mount")) return 2;
    return walked(folder / "t").calls.size() == walked(folder / "t", Mounts::kSkip).calls.size() + 1 ? 0 : 3;
  });
  if (status == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(status, 0);
}

TEST_F(FileTreeTest, FollowsNoLinkThatReplacesAFolder) {
  makeFolder(folder / "outside");
  support::writeFile(folder / "outside/precious", "");
  makeFolder(folder / "t");
  makeFolder(folder / "t/a");
  Recorder recorder;
  recorder.onEnter = [&](const TreeEntry& entry) {
    if (entry.relative != "a") return;
    ASSERT_EQ(::rename((folder / "t/a").c_str(), (folder / "moved").c_str()), 0);
    makeLink("../outside", folder / "t/a");
  };
  platform::walkTree(folder / "t", recorder, Mounts::kEnter);
  EXPECT_THAT(recorder.calls, ElementsAre("+" + folder / "t", "+" + folder / "t/a", "!" + folder / "t/a",
                                          "-" + folder / "t/a", "-" + folder / "t"));
}

TEST_F(FileTreeTest, ContinuesAfterARemovedFolder) {
  makeFolder(folder / "t");
  for (const char* name : {"t/a", "t/b", "t/c"})
    makeFolder(folder / name);
  Recorder recorder;
  recorder.onEnter = [&](const TreeEntry& entry) {
    if (entry.relative == "b") ::rmdir(entry.path.c_str());
  };
  platform::walkTree(folder / "t", recorder, Mounts::kEnter);
  EXPECT_THAT(recorder.errors, ElementsAre(ENOENT));
  EXPECT_THAT(recorder.relative, UnorderedElementsAre("", "a", "b", "c"));
}

// Deep enough for a walk to close the outer folders.
constexpr int kDepth = 60;

std::string deepName(int depth) {
  std::string name = "deep";
  for (int i = 0; i < depth; ++i)
    name += "/d";
  return name;
}

class MovedFolderTest : public FileTreeTest {
 protected:
  // Walks the tree and moves the folder at `depth` to "elsewhere/moved" when the innermost folder is visited.
  Recorder walkWhileMoving(int depth, const std::function<void(const std::string&)>& replace = {}) {
    makeFolder(folder / "t");
    makeFolder(folder / "elsewhere");
    support::writeFile(folder / "elsewhere/precious", "");
    EXPECT_TRUE(support::makeDeepFolder(folder / "t/deep", kDepth));
    makeFolder(folder / "t/other");
    Recorder recorder;
    recorder.onEnter = [this, depth, replace](const TreeEntry& entry) {
      if (entry.relative != deepName(kDepth)) return;
      const std::string from = folder / ("t/" + deepName(depth));
      ASSERT_EQ(::rename(from.c_str(), (folder / "elsewhere/moved").c_str()), 0);
      if (replace) replace(from);
    };
    platform::walkTree(folder / "t", recorder, Mounts::kEnter);
    return recorder;
  }
};

TEST_F(MovedFolderTest, EndsTheWalk) {
  const Recorder recorder = walkWhileMoving(3);
  EXPECT_THAT(recorder.errors, ElementsAre(ESTALE));
  EXPECT_EQ(recorder.calls.back(), "!" + folder / ("t/" + deepName(3)));
}

TEST_F(MovedFolderTest, IgnoresALinkOrFolderAtItsPath) {
  const std::function<void(const std::string&)> replacements[] = {
      [&](const std::string& path) { makeLink(folder / "elsewhere", path); },
      [&](const std::string& path) { EXPECT_TRUE(support::makeDeepFolder(path, 3)); },
  };
  for (const auto& replace : replacements) {
    const Recorder recorder = walkWhileMoving(3, replace);
    EXPECT_THAT(recorder.errors, ElementsAre(ESTALE));
    EXPECT_THAT(recorder.relative, Not(Contains(HasSubstr("precious"))));
    std::filesystem::remove_all(folder / "t");
    std::filesystem::remove_all(folder / "elsewhere");
  }
}

TEST_F(MovedFolderTest, LeadsNoWalkOutsideAtAnyDepth) {
  for (int depth = 0; depth <= kDepth; depth += 6) {
    const Recorder recorder = walkWhileMoving(depth);
    EXPECT_THAT(recorder.outside, testing::IsEmpty());
    EXPECT_THAT(recorder.relative, Not(Contains(HasSubstr("precious"))));
    std::filesystem::remove_all(folder / "t");
    std::filesystem::remove_all(folder / "elsewhere");
  }
}

TEST_F(FileTreeTest, NeedsFewDescriptors) {
  makeSmallTree(folder / "t");
  ASSERT_TRUE(support::makeDeepFolder(folder / "t/deep", 100));
  const std::vector<std::string> all = walked(folder / "t").calls;
  for (const unsigned more : {3u, 4u, 5u, 10u}) {
    support::Child limited([&] {
      support::limitDescriptors(more);
      return walked(folder / "t").calls == all ? 0 : 1;
    });
    EXPECT_EQ(limited.wait(), 0) << more;
  }
}

TEST_F(FileTreeTest, ListsEntriesWithTheirKinds) {
  makeSmallTree(folder / "t");
  std::vector<std::string> listed;
  for (const platform::FolderEntry& entry : platform::entriesOf(folder / "t")) {
    const char* const kind = entry.kind == EntryKind::kFolder ? "/" : entry.kind == EntryKind::kLink ? "@" : "-";
    listed.push_back(kind + entry.name);
  }
  EXPECT_THAT(listed, UnorderedElementsAre("/a", "/.hidden", "-\xff\xfe", "@to a", "@dangling", "@loop", "-pipe"));
  EXPECT_EQ(platform::entriesOf(folder / "t/to a").size(), 3u);
  EXPECT_TRUE(platform::entriesOf(folder / "t/pipe").empty());
  EXPECT_TRUE(platform::entriesOf(folder / "missing").empty());
}

TEST_F(FileTreeTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  makeSmallTree(folder / "t");
  EXPECT_EQ(walked(folder / "t\0"s).calls, walked(folder / "t").calls);
}

}  // namespace
