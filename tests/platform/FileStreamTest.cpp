#include "platform/FileStream.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <unistd.h>

#include <fstream>
#include <string>

#include "platform/UniqueFd.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"

namespace {

using platform::UniqueFd;

class FileStream : public testing::Test {
 protected:
  FileStream() { support::writeFile(path, "first\n"); }

  // Returns the descriptor that the next open file gets.
  static int nextDescriptor() { return UniqueFd(::open("/dev/null", O_RDONLY | O_CLOEXEC)).get(); }

  const support::TemporaryFolder folder;
  const std::string path = folder / "file";
  UniqueFd file{::open(path.c_str(), O_RDWR | O_CREAT | O_APPEND | O_CLOEXEC, 0600)};
  std::fstream stream;
};

TEST_F(FileStream, AppendsToTheFile) {
  ASSERT_TRUE(platform::openForAppending(stream, file.get()));
  stream << "second\n" << std::flush;
  EXPECT_EQ(support::contentsOf(path), "first\nsecond\n");
}

TEST_F(FileStream, IsClosedIndependentlyOfTheDescriptor) {
  const int duplicate = nextDescriptor();
  ASSERT_TRUE(platform::openForAppending(stream, file.get()));
  file.reset();
  stream << "second\n" << std::flush;
  EXPECT_EQ(support::contentsOf(path), "first\nsecond\n");
  stream.close();
  EXPECT_EQ(::fcntl(duplicate, F_GETFD), -1);
}

TEST_F(FileStream, OpensAClosedStreamAgain) {
  for (const char* text : {"second\n", "third\n"}) {
    ASSERT_TRUE(platform::openForAppending(stream, file.get()));
    stream << text;
    stream.close();
  }
  EXPECT_TRUE(stream.good());
  EXPECT_EQ(support::contentsOf(path), "first\nsecond\nthird\n");
}

TEST_F(FileStream, ItsDescriptorIsNotInherited) {
  const int duplicate = nextDescriptor();
  ASSERT_TRUE(platform::openForAppending(stream, file.get()));
  EXPECT_EQ(::fcntl(duplicate, F_GETFD), FD_CLOEXEC);
}

TEST_F(FileStream, HasAPositionOfItsOwn) {
  ASSERT_TRUE(platform::openForAppending(stream, file.get()));
  stream << "second\n" << std::flush;
  EXPECT_EQ(::lseek(file.get(), 0, SEEK_CUR), 0);
}

TEST_F(FileStream, OpensWithoutProc) {
  const int result = support::withOwnMounts([this] {
    if (!support::mountMemory("/proc", 4096)) return support::kImpossible;
    if (!platform::openForAppending(stream, file.get())) return 1;
    stream << "second\n" << std::flush;
    return support::contentsOf(path) == "first\nsecond\n" ? 0 : 2;
  });
  if (result == support::kImpossible) GTEST_SKIP() << "cannot mount";
  EXPECT_EQ(result, 0);
}

TEST_F(FileStream, StaysClosedWithoutAFreeDescriptor) {
  support::Child child([this] {
    const rlimit none{0, 0};
    ::setrlimit(RLIMIT_NOFILE, &none);
    return platform::openForAppending(stream, file.get()) || stream.is_open() ? 1 : 7;
  });
  EXPECT_EQ(child.wait(), 7);
}

}  // namespace
