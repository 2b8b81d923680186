#include "platform/OwnersFolder.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <string>
#include <thread>

#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using platform::OwnersFolder;

constexpr uid_t kAnn = 4711;

uid_t ownerOf(const std::string& path) {
  struct stat object {};
  return ::lstat(path.c_str(), &object) == 0 ? object.st_uid : static_cast<uid_t>(-1);
}

class OwnersFolderTest : public testing::Test {
 protected:
  void SetUp() override {
    if (::geteuid() != 0) GTEST_SKIP() << "only the super-user may change its user id";
    for (const std::string& path : {home, home + "/a", home + "/a/b"}) {
      std::filesystem::create_directory(path);
      ASSERT_EQ(::chown(path.c_str(), kAnn, kAnn), 0);
    }
    std::filesystem::create_directory(roots);
  }

  bool createIn(const OwnersFolder& parent) const {
    return parent &&
           platform::UniqueFd(::openat(parent.get(), parent.name().c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600));
  }

  const support::TemporaryFolder folder;
  const std::string home = folder / "ann";
  const std::string roots = folder / "roots";
  const support::PasswordDatabase users{support::passwordEntry(0, support::ownHome()) +
                                        support::passwordEntry(kAnn, home)};
};

TEST_F(OwnersFolderTest, CreatesFilesAsTheOwner) {
  EXPECT_TRUE(createIn(OwnersFolder(home + "/a/b/file")));
  EXPECT_EQ(ownerOf(home + "/a/b/file"), kAnn);
  EXPECT_TRUE(createIn(OwnersFolder(home + "//a//file")));
  EXPECT_EQ(ownerOf(home + "/a/file"), kAnn);
}

TEST_F(OwnersFolderTest, FollowsNoLinkBelowTheOwnersFolder) {
  std::filesystem::create_symlink("a", home + "/link");
  EXPECT_FALSE(OwnersFolder(home + "/link/file"));
  EXPECT_FALSE(OwnersFolder(home + "/link/b/file"));
  EXPECT_FALSE(OwnersFolder(home + "/missing/file"));
}

TEST_F(OwnersFolderTest, FollowsLinksOfTheSuperUser) {
  std::filesystem::create_symlink("ann", folder / "home");
  EXPECT_TRUE(createIn(OwnersFolder(folder / "home/file")));
  EXPECT_EQ(ownerOf(home + "/file"), kAnn);
}

TEST_F(OwnersFolderTest, FollowsNoLinkOfAnotherUser) {
  std::filesystem::create_symlink(roots, folder / "link");
  ASSERT_EQ(::lchown((folder / "link").c_str(), kAnn, kAnn), 0);
  EXPECT_FALSE(OwnersFolder(folder / "link/file"));
  EXPECT_TRUE(OwnersFolder(folder / "link").isForeign());
}

TEST_F(OwnersFolderTest, KeepsTheRightsInItsOwnFolders) {
  const OwnersFolder parent(roots + "/file");
  EXPECT_FALSE(parent.isForeign());
  EXPECT_TRUE(createIn(parent));
  EXPECT_EQ(ownerOf(roots + "/file"), 0u);
}

TEST_F(OwnersFolderTest, NamesAFolderWithATrailingSlash) {
  const OwnersFolder parent(home + "/a/");
  ASSERT_TRUE(parent);
  EXPECT_EQ(parent.name(), "a");
}

TEST_F(OwnersFolderTest, IsUnusableForAnUnknownOwner) {
  ASSERT_EQ(::chown(home.c_str(), kAnn + 1, kAnn + 1), 0);
  EXPECT_FALSE(OwnersFolder(home + "/file"));
}

TEST_F(OwnersFolderTest, OtherThreadsKeepTheirRights) {
  std::promise<void> inScope;
  std::thread other([&] {
    inScope.get_future().wait();
    support::writeFile(roots + "/file", "");
  });
  {
    const OwnersFolder parent(home + "/file");
    inScope.set_value();
    other.join();
  }
  EXPECT_EQ(ownerOf(roots + "/file"), 0u);
}

TEST_F(OwnersFolderTest, RightsEndWithTheScope) {
  { const OwnersFolder parent(home + "/file"); }
  support::writeFile(roots + "/file", "");
  EXPECT_EQ(ownerOf(roots + "/file"), 0u);
}

}  // namespace
