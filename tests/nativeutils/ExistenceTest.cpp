#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "nativeutils/Files.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Capabilities.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

class ExistenceTest : public nativeutils_test::LoggedTest {
 protected:
  void TearDown() override { EXPECT_TRUE(logged().empty()); }

  static bool asRoot() { return ::geteuid() == 0; }

  // "" if nothing can be created.
  static std::string nearest(const std::string& path) {
    std::string found = "unchanged";
    if (utilIsCreatableWritablePath(path.c_str(), found)) return found;
    EXPECT_EQ(found, "unchanged");
    return "";
  }

  const support::TemporaryFolder folder;
};

TEST_F(ExistenceTest, DistinguishesFilesAndFolders) {
  support::writeFile(folder / "file", "");
  EXPECT_TRUE(utilFileExitsAtPath(folder / "file"));
  EXPECT_FALSE(utilFolderExitsAtPath(folder / "file"));
  EXPECT_TRUE(utilFolderExitsAtPath(folder.path()));
  EXPECT_FALSE(utilFileExitsAtPath(folder.path()));
}

TEST_F(ExistenceTest, IsFalseForAMissingPath) {
  for (const std::string& path : {folder / "missing", folder / "missing/x", std::string()}) {
    EXPECT_FALSE(utilFileExitsAtPath(path));
    EXPECT_FALSE(utilFolderExitsAtPath(path));
  }
}

TEST_F(ExistenceTest, FollowsLinks) {
  support::writeFile(folder / "file", "");
  ASSERT_EQ(::symlink(".", (folder / "to folder").c_str()), 0);
  ASSERT_EQ(::symlink("file", (folder / "to file").c_str()), 0);
  ASSERT_EQ(::symlink("missing", (folder / "dangling").c_str()), 0);
  ASSERT_EQ(::symlink("loop", (folder / "loop").c_str()), 0);
  EXPECT_TRUE(utilFolderExitsAtPath(folder / "to folder"));
  EXPECT_TRUE(utilFileExitsAtPath(folder / "to file"));
  for (const char* nothing : {"dangling", "loop"}) {
    EXPECT_FALSE(utilFileExitsAtPath(folder / nothing));
    EXPECT_FALSE(utilFolderExitsAtPath(folder / nothing));
  }
}

TEST_F(ExistenceTest, DoesNotWaitForAPipe) {
  ASSERT_EQ(::mkfifo((folder / "pipe").c_str(), 0600), 0);
  EXPECT_TRUE(utilFileExitsAtPath(folder / "pipe"));
}

using NearestExistingTest = ExistenceTest;

TEST_F(NearestExistingTest, IsTheParentOfAMissingPath) {
  EXPECT_EQ(nearest(folder / "new"), folder.path());
  EXPECT_EQ(nearest(folder / "new/deeper/and deeper"), folder.path());
}

TEST_F(NearestExistingTest, IsAnExistingFolderItself) {
  EXPECT_EQ(nearest(folder.path()), folder.path());
}

TEST_F(NearestExistingTest, IsMissingForAnEmptyPath) {
  std::string found = "unchanged";
  EXPECT_FALSE(utilIsCreatableWritablePath(nullptr, found));
  EXPECT_EQ(found, "unchanged");
  EXPECT_EQ(nearest(""), "");
}

TEST_F(NearestExistingTest, IsMissingForAMissingRelativePath) {
  EXPECT_EQ(nearest("no such thing/here"), "");
  EXPECT_EQ(nearest("no such thing"), "");
}

TEST_F(NearestExistingTest, IsFoundForARelativePath) {
  support::Child inside([&] {
    if (::chdir(folder.path().c_str()) != 0 || ::mkdir("here", 0700) != 0) return 1;
    return nearest("here/new") == "here" && nearest("./new") == "." ? 0 : 2;
  });
  EXPECT_EQ(inside.wait(), 0);
}

TEST_F(NearestExistingTest, ExpandsATilde) {
  EXPECT_EQ(nearest("~/new/deeper"), support::ownHome());
  EXPECT_EQ(nearest("~"), support::ownHome());
  EXPECT_EQ(nearest("~tester/new"), support::ownHome());
}

TEST_F(NearestExistingTest, DoesNotExpandTheTildeOfUnknownUsers) {
  EXPECT_EQ(nearest("~no-such-user/new"), "");
}

TEST_F(NearestExistingTest, MayBeTheRoot) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user may write there";
  EXPECT_EQ(nearest("/"), "/");
  EXPECT_EQ(nearest("/no-such-folder/x/y"), "/");
}

TEST_F(NearestExistingTest, UsesThePermissionsOfTheRealUser) {
  if (!asRoot()) GTEST_SKIP() << "only the super-user may change the user";
  ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
  ASSERT_EQ(::mkdir((folder / "mine").c_str(), 0700), 0);
  support::Child other([&] {
    if (::chdir(folder.path().c_str()) != 0 || ::seteuid(65534) != 0) return 1;
    if (!utilFolderHasPermission("mine", PermissionType_Read)) return 2;
    if (!utilFolderHasPermission("mine", PermissionType_Write)) return 3;
    return nearest("mine/new") == "mine" ? 0 : 4;
  });
  EXPECT_EQ(other.wait(), 0);
}

TEST_F(NearestExistingTest, IgnoresADanglingLink) {
  ASSERT_EQ(::symlink("missing", (folder / "dangling").c_str()), 0);
  EXPECT_EQ(nearest(folder / "dangling/x"), folder.path());
}

TEST_F(NearestExistingTest, MayBeAnExecutableFile) {
  support::writeFile(folder / "file", "");
  EXPECT_EQ(nearest(folder / "file/x"), "");
  EXPECT_EQ(nearest(folder / "file/"), folder.path());
  ASSERT_EQ(::chmod((folder / "file").c_str(), 0700), 0);
  EXPECT_EQ(nearest(folder / "file/x"), folder / "file");
}

TEST_F(NearestExistingTest, MustBeReadableWritableAndSearchable) {
  for (const mode_t mode : {0300u, 0500u, 0600u}) {
    const std::string closed = folder / std::to_string(mode);
    ASSERT_EQ(::mkdir(closed.c_str(), mode), 0);
    support::Child powerless([&] {
      if (asRoot() && !support::dropCapabilities()) return 1;
      return nearest(closed + (mode == 0600u ? "" : "/new")).empty() ? 0 : 2;
    });
    EXPECT_EQ(powerless.wait(), 0) << std::oct << mode;
  }
}

TEST_F(NearestExistingTest, AcceptsAHundredThousandComponents) {
  std::string path = folder.path();
  for (int i = 0; i < 100000; ++i)
    path += "/a";
  EXPECT_EQ(nearest(path), folder.path());
  EXPECT_EQ(nearest(path.substr(1)), "");
}

}  // namespace
