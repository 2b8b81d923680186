#include "platform/FileCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <string>

#include "tests/macos/doubles/FileCopy.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Files.h"

// Replaces the function of the C library. Reports holes as macOS does for an offset within the data of a file that has
// no holes.
extern "C" off_t lseek(int fd, off_t offset, int whence) noexcept {
  if (whence != SEEK_DATA && whence != SEEK_HOLE) return ::syscall(SYS_lseek, fd, offset, whence);
  errno = ENXIO;
  return -1;
}

namespace {

class FileCopyTest : public macos_test::PlatformTest {
 protected:
  FileCopyTest() {
    const std::array<timespec, 2> times{timespec{1000, 0}, timespec{2000, 0}};
    support::writeFile(from, "text");
    EXPECT_EQ(::chmod(from.c_str(), 0444), 0);
    EXPECT_EQ(::utimensat(AT_FDCWD, from.c_str(), times.data(), 0), 0);
    doubles::accessListTarget.reset();
  }

  const support::TemporaryFolder folder;
  const std::string from = folder / "from";
  const std::string to = folder / "to";
};

// An access list may forbid the owner to set the mode and the times.
TEST_F(FileCopyTest, CopiesTheAccessListAfterModeAndTimes) {
  EXPECT_EQ(platform::copyFile(from, to), std::nullopt);
  ASSERT_TRUE(doubles::accessListTarget);
  EXPECT_EQ(doubles::accessListTarget->st_mode & 07777, 0444u);
  EXPECT_EQ(doubles::accessListTarget->st_mtime, 2000);
}

TEST_F(FileCopyTest, CopiesTheAccessListAfterAFailedAttribute) {
  doubles::failNextCall("fcopyfile", E2BIG);
  EXPECT_EQ(platform::copyFile(from, to), std::nullopt);
  EXPECT_TRUE(doubles::accessListTarget);
}

TEST_F(FileCopyTest, SucceedsIfNoAttributeCanBeCopied) {
  doubles::failCall("fcopyfile", ENOTSUP);
  EXPECT_EQ(platform::copyFile(from, to), std::nullopt);
  EXPECT_EQ(support::contentsOf(to), "text");
}

TEST_F(FileCopyTest, CopiesContentsWithoutTheAccessList) {
  EXPECT_TRUE(platform::copyFileContents(from, to));
  EXPECT_TRUE(platform::copyFileContents(from, "/dev/null"));
  EXPECT_FALSE(doubles::accessListTarget);
}

TEST_F(FileCopyTest, CopiesEveryByteIfHolesAreMisreported) {
  const std::string large = folder / "large";
  const std::string bytes(300000, 'x');
  support::writeFile(large, bytes);
  EXPECT_EQ(platform::copyFile(large, to), std::nullopt);
  EXPECT_TRUE(support::contentsOf(to) == bytes);
  EXPECT_TRUE(platform::copyFileContents(large, folder / "contents"));
  EXPECT_TRUE(support::contentsOf(folder / "contents") == bytes);
}

}  // namespace
