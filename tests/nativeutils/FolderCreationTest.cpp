#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "nativeutils/Files.h"
#include "nativeutils/Strings.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

constexpr unsigned int kUnchanged = 0xFFFFFFFF;
constexpr unsigned int kOwner = 4711;
constexpr unsigned int kGroup = 4712;

class FolderCreationTest : public nativeutils_test::LoggedTest {
 protected:
  // The functions log nothing.
  void TearDown() override { EXPECT_TRUE(logged().empty()); }

  static struct stat statusOf(const std::string& path) {
    struct stat object {};
    EXPECT_EQ(::lstat(path.c_str(), &object), 0) << path;
    return object;
  }

  static bool asRoot() { return ::geteuid() == 0; }

  const support::TemporaryFolder folder;
};

TEST_F(FolderCreationTest, CreatesMissingParents) {
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a/b/c").c_str(), kUnchanged, kUnchanged, 0775));
  EXPECT_TRUE(utilFolderExitsAtPath(folder / "a/b/c"));
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a/b/c").c_str(), kUnchanged, kUnchanged, 0775));
}

TEST_F(FolderCreationTest, AppliesTheUmaskInTheShortForm) {
  const mode_t previous = ::umask(027);
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "a/b", false));
  ::umask(previous);
  EXPECT_EQ(support::modeOf(folder / "a"), 0750u);
  EXPECT_EQ(support::modeOf(folder / "a/b"), 0750u);
}

TEST_F(FolderCreationTest, FailsForNull) {
  EXPECT_FALSE(utilCreateDirectoryPathWithAttributes(nullptr, kUnchanged, kUnchanged, 0775));
}

TEST_F(FolderCreationTest, FailsForAnEmptyPath) {
  EXPECT_FALSE(utilCreateDirectoryPath("", true));
}

TEST_F(FolderCreationTest, AcceptsAnyExistingObject) {
  support::writeFile(folder / "file", "text");
  ASSERT_EQ(::symlink("nowhere", (folder / "link").c_str()), 0);
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "file", false));
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "link", false));
  EXPECT_EQ(support::contentsOf(folder / "file"), "text");
  EXPECT_EQ(support::namesIn(folder.path()), (std::vector<std::string>{"file", "link"}));
}

TEST_F(FolderCreationTest, NeedsAFolderForATrailingSlash) {
  support::writeFile(folder / "file", "text");
  ASSERT_EQ(::symlink("nowhere", (folder / "dangling").c_str()), 0);
  ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
  ASSERT_EQ(::symlink("a", (folder / "link").c_str()), 0);
  EXPECT_FALSE(utilCreateDirectoryPath(folder / "file/", false));
  EXPECT_EQ(errno, ENOTDIR);
  EXPECT_FALSE(utilCreateDirectoryPath(folder / "dangling/", false));
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "link/", false));
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "new/", false));
  EXPECT_EQ(support::contentsOf(folder / "file"), "text");
  EXPECT_FALSE(utilPathExists(folder / "nowhere"));
}

TEST_F(FolderCreationTest, FailsBelowAFile) {
  support::writeFile(folder / "file", "text");
  EXPECT_FALSE(utilCreateDirectoryPath(folder / "file/a/b", false));
}

TEST_F(FolderCreationTest, SetsTheExactModeWithOwnerAndGroup) {
  const mode_t previous = ::umask(077);
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a/b").c_str(), ::geteuid(), ::getegid(), 02775));
  ::umask(previous);
  EXPECT_EQ(support::modeOf(folder / "a/b"), 02775u);
  EXPECT_EQ(support::modeOf(folder / "a") & 0777u, 0700u) << "a parent keeps what mkdir gave it";
}

TEST_F(FolderCreationTest, ChangesAnExistingFolder) {
  ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a").c_str(), ::geteuid(), ::getegid(), 0755));
  EXPECT_EQ(support::modeOf(folder / "a"), 0755u);
}

TEST_F(FolderCreationTest, KeepsTheModeWithoutOwnerOrGroup) {
  ASSERT_EQ(::mkdir((folder / "a").c_str(), 0700), 0);
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a").c_str(), kUnchanged, ::getegid(), 0755));
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a").c_str(), ::geteuid(), kUnchanged, 0755));
  EXPECT_EQ(support::modeOf(folder / "a"), 0700u);
}

TEST_F(FolderCreationTest, KeepsOwnerAndGroupOfParents) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user may change owners";
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "a/b").c_str(), kOwner, kGroup, 0775));
  EXPECT_EQ(statusOf(folder / "a/b").st_uid, kOwner);
  EXPECT_EQ(statusOf(folder / "a/b").st_gid, kGroup);
  EXPECT_EQ(statusOf(folder / "a").st_uid, ::geteuid());
  EXPECT_EQ(statusOf(folder / "a").st_gid, statusOf(folder.path()).st_gid);
}

TEST_F(FolderCreationTest, ChangesAnExistingFile) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user may change owners";
  support::writeFile(folder / "file", "text");
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "file").c_str(), kOwner, kGroup, 0640));
  EXPECT_EQ(statusOf(folder / "file").st_uid, kOwner);
  EXPECT_EQ(statusOf(folder / "file").st_gid, kGroup);
  EXPECT_EQ(support::modeOf(folder / "file"), 0640u);
}

TEST_F(FolderCreationTest, SetsTheModeAfterTheOwner) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  for (const mode_t mode : {04755u, 06755u}) {
    support::writeFile(folder / "file", "");
    EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "file").c_str(), 4711, 4712,
                                                      static_cast<unsigned short>(mode)));
    EXPECT_EQ(support::modeOf(folder / "file"), mode);
  }
}

TEST_F(FolderCreationTest, ChangesTheTargetOfALink) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change owners";
  ASSERT_EQ(::mkdir((folder / "t").c_str(), 0700), 0);
  ASSERT_EQ(::symlink("t", (folder / "link").c_str()), 0);
  EXPECT_TRUE(utilCreateDirectoryPathWithAttributes((folder / "link").c_str(), 4711, 4712, 0750));
  struct stat object {};
  ASSERT_EQ(::stat((folder / "t").c_str(), &object), 0);
  EXPECT_EQ(object.st_uid, 4711u);
  EXPECT_EQ(object.st_gid, 4712u);
  EXPECT_EQ(object.st_mode & 07777u, 0750u);
  ASSERT_EQ(::lstat((folder / "link").c_str(), &object), 0);
  EXPECT_EQ(object.st_uid, 0u);
}

TEST_F(FolderCreationTest, KeepsAFolderWhoseOwnerCannotBeChanged) {
  support::Child powerless([&] {
    if (asRoot() && !support::dropCapabilities()) return 1;
    return utilCreateDirectoryPathWithAttributes((folder / "a").c_str(), kOwner, kGroup, 0775) ? 2 : 0;
  });
  EXPECT_EQ(powerless.wait(), 0);
  EXPECT_TRUE(utilFolderExitsAtPath(folder / "a"));
}

TEST_F(FolderCreationTest, FailsInAReadOnlyFolder) {
  ASSERT_EQ(::mkdir((folder / "closed").c_str(), 0500), 0);
  support::Child powerless([&] {
    if (asRoot() && !support::dropCapabilities()) return 1;
    return utilCreateDirectoryPath(folder / "closed/a/b", false) ? 2 : 0;
  });
  EXPECT_EQ(powerless.wait(), 0);
}

TEST_F(FolderCreationTest, FailsInAnUnreadableWorkingFolder) {
  ASSERT_EQ(::mkdir((folder / "blind").c_str(), 0700), 0);
  support::Child powerless([&] {
    if (::chdir((folder / "blind").c_str()) != 0 || ::chmod(".", 0) != 0) return 1;
    if (asRoot() && !support::dropCapabilities()) return 2;
    return utilCreateDirectoryPath("a/b", false) ? 3 : 0;
  });
  EXPECT_EQ(powerless.wait(), 0);
}

TEST_F(FolderCreationTest, AcceptsAHundredThousandComponents) {
  std::string path = folder.path();
  for (int i = 0; i < 100000; ++i)
    path += "/a";
  EXPECT_FALSE(utilCreateDirectoryPath(path, false));
}

TEST_F(FolderCreationTest, FailsForATooLongName) {
  EXPECT_FALSE(utilCreateDirectoryPath(folder / std::string(256, 'n'), false));
  EXPECT_TRUE(utilCreateDirectoryPath(folder / std::string(255, 'n'), false));
}

TEST_F(FolderCreationTest, IgnoresExtraSlashes) {
  EXPECT_TRUE(utilCreateDirectoryPath(folder / "/a//b///", false));
  EXPECT_TRUE(utilFolderExitsAtPath(folder / "a/b"));
}

TEST_F(FolderCreationTest, AcceptsAnyBytesInNames) {
  const std::string unusual = folder / "line\nbreak/\xff\xfe";
  EXPECT_TRUE(utilCreateDirectoryPath(unusual, false));
  EXPECT_TRUE(utilFolderExitsAtPath(unusual));
}

TEST_F(FolderCreationTest, SucceedsInSeveralProcessesAtOnce) {
  for (int round = 0; round < 50; ++round) {
    const std::string path = folder / (std::to_string(round) + "/a/b/c/d/e/f");
    const auto make = [&] { return utilCreateDirectoryPath(path, false) ? 0 : 1; };
    support::Child first(make), second(make), third(make);
    EXPECT_EQ(first.wait() + second.wait() + third.wait(), 0);
    ASSERT_TRUE(utilFolderExitsAtPath(path));
  }
}

}  // namespace
