// What happens when the parent folder is seen no more right after the object in it has been seen. No file system does
// that on demand, so this program answers the library's `stat` itself.

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "nativeutils/Backup.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Files.h"

namespace {
std::string goneFromSight;
}

extern "C" int stat(const char* path, struct stat* object) noexcept {
  if (goneFromSight == path) {
    errno = ENOENT;
    return -1;
  }
  return ::fstatat(AT_FDCWD, path, object, 0);
}

namespace {

class BackupParentTest : public nativeutils_test::LoggedTest {};

TEST_F(BackupParentTest, WithoutItTheObjectIsNotMoved) {
  const support::TemporaryFolder folder;
  const std::string app = folder / "App";
  support::writeFile(app, "current");
  goneFromSight = folder.path();
  std::string backup = "former";
  const bool moved = utilBackupFolderIfExits(app, backup, false);
  goneFromSight.clear();
  EXPECT_FALSE(moved);
  EXPECT_EQ(backup, "former");
  EXPECT_EQ(support::contentsOf(app), "current");
  EXPECT_THAT(logged(),
              testing::ElementsAre(
                  "INFO utilBackupFolderIfExits pathToBkp " + app,
                  "INFO Backup parent folder path '" + folder.path() + "' is not present",
                  "FATAL Failed to rename Error code (2:No such file or directory) the directory from " + app + " to .",
                  "FATAL Error Failed to rename the directory."));
}

}  // namespace
