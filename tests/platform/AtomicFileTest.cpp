#include "platform/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

#include <climits>
#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string>

#include "platform/TreeRemoval.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"
#include "tests/support/Trees.h"

namespace {

using platform::writeFileAtomically;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uid_t kOtherUser = 65534;

class AtomicFileTest : public testing::Test {
 protected:
  AtomicFileTest() { ::umask(022); }

  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
};

ino_t numberOf(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 ? item.st_ino : 0;
}

TEST_F(AtomicFileTest, HoldsExactlyTheBytes) {
  const std::string bytes("\0a\n\xFF", 4);
  EXPECT_TRUE(writeFileAtomically(path, bytes));
  EXPECT_EQ(support::contentsOf(path), bytes);
  EXPECT_TRUE(writeFileAtomically(path, ""));
  EXPECT_EQ(support::contentsOf(path), "");
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, KeepsTheBytesForAnOpenReader) {
  support::writeFile(path, "old");
  std::ifstream reader(path);
  const ino_t previous = numberOf(path);
  ASSERT_TRUE(writeFileAtomically(path, "new"));
  EXPECT_NE(numberOf(path), previous);
  std::string seen;
  reader >> seen;
  EXPECT_EQ(seen, "old");
}

TEST_F(AtomicFileTest, IsNeverReadPartially) {
  const std::string contents[] = {std::string(300000, 'a'), std::string(200000, 'b')};
  support::writeFile(path, contents[0]);
  const support::Child writer([&] {
    for (std::size_t i = 0; writeFileAtomically(path, contents[i % 2]); ++i) {
    }
    return 1;
  });
  for (int i = 0; i < 200; ++i) {
    const std::string seen = support::contentsOf(path);
    ASSERT_TRUE(seen == contents[0] || seen == contents[1]) << seen.size();
  }
}

TEST_F(AtomicFileTest, AppliesTheUmaskToANewFile) {
  ASSERT_TRUE(writeFileAtomically(path, "x"));
  EXPECT_EQ(support::modeOf(path), 0644u);
  ::umask(0);
  ASSERT_TRUE(writeFileAtomically(folder / "open", "x"));
  EXPECT_EQ(support::modeOf(folder / "open"), 0666u);
}

TEST_F(AtomicFileTest, KeepsThePermissionsOfTheReplacedFile) {
  for (const mode_t mode : {0600u, 0400u, 0755u, 0666u}) {
    support::writeFile(path, "x");
    ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    ASSERT_TRUE(writeFileAtomically(path, "y"));
    EXPECT_EQ(support::modeOf(path), mode);
    ASSERT_EQ(::unlink(path.c_str()), 0);
  }
}

TEST_F(AtomicFileTest, ClearsTheSetUserIdBit) {
  support::writeFile(path, "x");
  ASSERT_EQ(::chmod(path.c_str(), 06755), 0);
  ASSERT_TRUE(writeFileAtomically(path, "y"));
  EXPECT_EQ(support::modeOf(path), 0755u);
}

TEST_F(AtomicFileTest, KeepsTheOwnerForTheSuperUser) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  support::writeFile(path, "x");
  ASSERT_EQ(::chown(path.c_str(), kOtherUser, kOtherUser), 0);
  ASSERT_TRUE(writeFileAtomically(path, "y"));
  struct stat item {};
  ASSERT_EQ(::stat(path.c_str(), &item), 0);
  EXPECT_EQ(item.st_uid, kOtherUser);
  EXPECT_EQ(item.st_gid, kOtherUser);
}

TEST_F(AtomicFileTest, ReplacesALinkAndKeepsItsTarget) {
  support::writeFile(folder / "target", "target");
  ASSERT_EQ(::symlink("target", path.c_str()), 0);
  ASSERT_TRUE(writeFileAtomically(path, "new"));
  EXPECT_EQ(support::contentsOf(folder / "target"), "target");
  EXPECT_FALSE(std::filesystem::is_symlink(path));
  EXPECT_EQ(support::contentsOf(path), "new");
  EXPECT_EQ(support::modeOf(path), 0644u);
}

TEST_F(AtomicFileTest, ReplacesAPipeWithoutWaiting) {
  ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
  ASSERT_TRUE(writeFileAtomically(path, "new"));
  EXPECT_EQ(support::contentsOf(path), "new");
}

TEST_F(AtomicFileTest, DoesNotReplaceAFolder) {
  ASSERT_EQ(::mkdir(path.c_str(), 0777), 0);
  EXPECT_FALSE(writeFileAtomically(path, "new"));
  EXPECT_FALSE(writeFileAtomically(path + "/", "new"));
  EXPECT_FALSE(writeFileAtomically(path + "/.", "new"));
  EXPECT_FALSE(writeFileAtomically(path + "/..", "new"));
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("file"));
  EXPECT_THAT(support::namesIn(path), IsEmpty());
}

TEST_F(AtomicFileTest, CreatesNoFolder) {
  EXPECT_FALSE(writeFileAtomically(folder / "missing/file", "x"));
  EXPECT_THAT(support::namesIn(folder.path()), IsEmpty());
}

TEST_F(AtomicFileTest, AcceptsTheLongestNameAndAnyBytes) {
  const std::string longest = folder / std::string(NAME_MAX, 'n');
  EXPECT_TRUE(writeFileAtomically(longest, "x"));
  EXPECT_EQ(support::contentsOf(longest), "x");
  EXPECT_FALSE(writeFileAtomically(longest + "n", "x"));
  EXPECT_FALSE(writeFileAtomically("/" + std::string(2 * PATH_MAX, '/') + "file", "x"));
  EXPECT_TRUE(writeFileAtomically(folder / "\n\xFF", "x"));
  EXPECT_EQ(support::namesIn(folder.path()).size(), 2u);
}

TEST_F(AtomicFileTest, AcceptsTheLongestPath) {
  std::string longest = folder / "d";
  ASSERT_TRUE(support::makeDeepFolder(longest, static_cast<int>(4088 - longest.size()) / 2));
  while (longest.size() < 4088)
    longest += "/d";
  longest += "/" + std::string(4090 - longest.size() - 1, 'f');
  ASSERT_EQ(longest.size(), 4090u);
  EXPECT_TRUE(writeFileAtomically(longest, "old"));
  EXPECT_TRUE(writeFileAtomically(longest, "new"));
  EXPECT_EQ(support::contentsOf(longest), "new");
  EXPECT_FALSE(writeFileAtomically(longest + "too long", "x"));
  EXPECT_THAT(support::namesIn(longest.substr(0, longest.rfind('/'))).size(), 1u);
  EXPECT_EQ(platform::removeTree(folder / "d"), std::nullopt);
}

TEST_F(AtomicFileTest, NeedsNoReadAccessToTheFolder) {
  ASSERT_EQ(::mkdir((folder / "closed").c_str(), 0300), 0);
  support::Child powerless(
      [&] { return support::dropCapabilities() && writeFileAtomically(folder / "closed/file", "x") ? 0 : 1; });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_EQ(support::contentsOf(folder / "closed/file"), "x");
}

TEST_F(AtomicFileTest, EndsThePathAtTheFirstNul) {
  EXPECT_TRUE(writeFileAtomically(path + std::string("\0/other", 7), "x"));
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, UsesTheWorkingFolderForABareName) {
  support::Child inFolder(
      [&] { return ::chdir(folder.path().c_str()) == 0 && writeFileAtomically("file", "x") ? 0 : 1; });
  EXPECT_EQ(inFolder.wait(), 0);
  EXPECT_EQ(support::contentsOf(path), "x");
}

TEST_F(AtomicFileTest, KeepsTheFileInAReadOnlyFolder) {
  support::writeFile(path, "old");
  support::Child powerless([&] {
    // Relative, because the other user may not enter the parent folders.
    if (::chmod(folder.path().c_str(), 0555) != 0 || ::chdir(folder.path().c_str()) != 0) return 1;
    if (::geteuid() == 0 && ::setresuid(kOtherUser, kOtherUser, kOtherUser) != 0) return 2;
    if (support::contentsOf("file") != "old") return 3;
    return writeFileAtomically("file", "new") ? 4 : 0;
  });
  EXPECT_EQ(powerless.wait(), 0);
  ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
  EXPECT_EQ(support::contentsOf(path), "old");
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("file"));
}

TEST_F(AtomicFileTest, KeepsTheFileAtTheFileSizeLimit) {
  support::writeFile(path, "old");
  support::Child limited([&] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{10000, 10000};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 1;
    if (writeFileAtomically(path, std::string(10001, 'x'))) return 2;
    return writeFileAtomically(folder / "fits", std::string(10000, 'x')) ? 0 : 3;
  });
  EXPECT_EQ(limited.wait(), 0);
  EXPECT_EQ(support::contentsOf(path), "old");
  EXPECT_THAT(support::namesIn(folder.path()), ElementsAre("file", "fits"));
}

TEST_F(AtomicFileTest, KeepsTheFileOnAFullDisk) {
  const int result = support::withOwnMounts([&] {
    if (!support::mountMemory(folder.path(), 64 << 10)) return support::kImpossible;
    if (!writeFileAtomically(path, std::string(20000, 'o'))) return 1;
    const auto freeBlocks = [&] {
      struct statvfs disk {};
      return ::statvfs(folder.path().c_str(), &disk) == 0 ? disk.f_bfree : 0;
    };
    const auto before = freeBlocks();
    // First the disk has space for a part of the bytes, then for none.
    if (writeFileAtomically(path, std::string(60000, 'n'))) return 2;
    if (support::contentsOf(path) != std::string(20000, 'o')) return 3;
    if (support::namesIn(folder.path()).size() != 1 || freeBlocks() != before) return 4;
    support::writeFile(folder / "ballast", std::string(100000, 'b'));
    if (freeBlocks() != 0 || writeFileAtomically(path, "n")) return 5;
    if (support::contentsOf(path) != std::string(20000, 'o')) return 6;
    return support::namesIn(folder.path()).size() == 2 ? 0 : 7;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "mounts are not allowed here";
  EXPECT_EQ(result, 0);
}

TEST_F(AtomicFileTest, LeavesNoDescriptorOpen) {
  const auto open = [] { return support::namesIn("/proc/self/fd").size(); };
  const std::size_t before = open();
  for (int i = 0; i < 10; ++i) {
    EXPECT_TRUE(writeFileAtomically(path, "x"));
    EXPECT_FALSE(writeFileAtomically(folder.path(), "x"));
  }
  EXPECT_EQ(open(), before);
}

}  // namespace
