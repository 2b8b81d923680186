#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/FileCopy.h"
#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Files.h"

// Takes the place of the C library's: it answers for holes as macOS does within the data of a file that has none.
extern "C" off_t lseek(int fd, off_t offset, int whence) noexcept {
  if (whence != SEEK_DATA && whence != SEEK_HOLE) return ::syscall(SYS_lseek, fd, offset, whence);
  errno = ENXIO;
  return -1;
}

namespace {

using FileContentsTest = macos_test::SystemTest;

TEST_F(FileContentsTest, LosesNoByteToHolesThatAreNone) {
  const support::TemporaryFolder folder;
  const std::string bytes(300000, 'x');
  support::writeFile(folder / "from", bytes);
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_TRUE(support::contentsOf(folder / "to") == bytes);
  EXPECT_TRUE(platform::copyFileContents(folder / "from", folder / "bare"));
  EXPECT_TRUE(support::contentsOf(folder / "bare") == bytes);
}

}  // namespace
