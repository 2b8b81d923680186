// This program replaces `fcntl` and `fsync`.

#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdarg.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <string>
#include <vector>

#include "tests/support/Files.h"

namespace {

std::vector<std::string> flushes;
int fullFlushError = 0;

int flush(const std::string& call, int file, int error) {
  struct stat object {};
  if (::fstat(file, &object) == 0) flushes.push_back(call + " " + std::to_string(object.st_size));
  errno = error;
  return error == 0 ? 0 : -1;
}

}  // namespace

extern "C" int fcntl(int file, int command, ...) {
  if (command == F_FULLFSYNC) return flush("F_FULLFSYNC", file, fullFlushError);
  va_list arguments;
  va_start(arguments, command);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  return static_cast<int>(::syscall(SYS_fcntl, file, command, argument));
}

extern "C" int fsync(int file) {
  return flush("fsync", file, 0);
}

namespace {

using testing::ElementsAre;

class MacAtomicFileTest : public testing::Test {
 protected:
  MacAtomicFileTest() {
    flushes.clear();
    fullFlushError = 0;
    support::writeFile(path, "old");
  }

  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
};

TEST_F(MacAtomicFileTest, FlushesTheCacheOfTheDrive) {
  ASSERT_TRUE(platform::writeFileAtomically(path, "bytes"));
  EXPECT_THAT(flushes, ElementsAre("F_FULLFSYNC 5"));
}

TEST_F(MacAtomicFileTest, FallsBackToFsyncIfUnsupported) {
  for (const int error : {ENOTSUP, EINVAL, ENOTTY}) {
    flushes.clear();
    fullFlushError = error;
    EXPECT_TRUE(platform::writeFileAtomically(path, "bytes"));
    EXPECT_THAT(flushes, ElementsAre("F_FULLFSYNC 5", "fsync 5"));
  }
}

TEST_F(MacAtomicFileTest, AFailedFlushKeepsTheFile) {
  fullFlushError = EIO;
  EXPECT_FALSE(platform::writeFileAtomically(path, "bytes"));
  EXPECT_THAT(flushes, ElementsAre("F_FULLFSYNC 5"));
  EXPECT_EQ(support::contentsOf(path), "old");
}

}  // namespace
