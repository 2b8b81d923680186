#include <gtest/gtest.h>
#include <linux/fs.h>

#include <cerrno>
#include <optional>

#include "platform/Volumes.h"
#include "tests/platform/FakeFileSystem.h"
#include "tests/support/Files.h"

namespace {

using platform::isCaseSensitive;
using platform::mountPointOf;
using namespace platform_test;

class CaseSensitivityTest : public testing::Test {
 protected:
  ~CaseSensitivityTest() override {
    fakeType.reset();
    fakeFlags.reset();
  }

  const support::TemporaryFolder folder;
};

TEST_F(CaseSensitivityTest, FollowsTheFileSystemType) {
  fakeFlags = 0;
  for (const unsigned type : {0x4d44u, 0x2011bab0u, 0x4244u, 0x482bu, 0x5346544eu}) {
    fakeType = type;
    EXPECT_EQ(isCaseSensitive(folder.path()), false) << std::hex << type;
  }
  for (const unsigned type : {0xef53u, 0x58465342u, 0x9123683eu, 0x01021994u, 0x6969u}) {
    fakeType = type;
    EXPECT_EQ(isCaseSensitive(folder.path()), true) << std::hex << type;
  }
}

TEST_F(CaseSensitivityTest, FollowsTheFoldersCaseFolding) {
  fakeFlags = FS_CASEFOLD_FL | FS_EXTENT_FL;
  EXPECT_EQ(isCaseSensitive(folder.path()), false);
  fakeFlags = FS_EXTENT_FL;
  EXPECT_EQ(isCaseSensitive(folder.path()), true);
}

TEST_F(CaseSensitivityTest, AFileHasTheRuleOfItsFolder) {
  support::writeFile(folder / "file", "");
  fakeFlags = FS_CASEFOLD_FL;
  EXPECT_EQ(isCaseSensitive(folder / "file"), false);
  EXPECT_EQ(flagQueriesOfFiles, 0);
}

TEST(MountPointFailureTest, ReportsTheErrorOfStatfs) {
  for (const int error : {ESTALE, ENOTCONN, EIO}) {
    errors = {error};
    errno = 0;
    EXPECT_EQ(mountPointOf("/proc"), std::nullopt);
    EXPECT_EQ(errno, error);
  }
}

TEST(MountPointFailureTest, ReportsStatfsErrorBeforePathError) {
  errors = {ESTALE};
  EXPECT_EQ(mountPointOf("/no/such"), std::nullopt);
  EXPECT_EQ(errno, ESTALE);
}

TEST(MountPointFailureTest, RetriesAfterAnInterruption) {
  errors = {EINTR, EINTR};
  EXPECT_EQ(mountPointOf("/proc/self"), "/proc");
  errors = {EINTR, EINTR};
  EXPECT_EQ(isCaseSensitive("/proc/self"), true);
  EXPECT_TRUE(errors.empty());
}

}  // namespace
