#include <gtest/gtest.h>
#include <unistd.h>

#include <cstddef>
#include <string>

#include "platform/FileCopy.h"
#include "tests/platform/FakeFileSystem.h"
#include "tests/support/Files.h"

namespace {

// Simulates a file system whose files can share blocks.
class SharedBlocksTest : public testing::Test {
 protected:
  SharedBlocksTest() {
    shared = 0;
    support::writeFile(from, "twenty bytes of text");
    platform_test::fakeSharing = share;
  }
  ~SharedBlocksTest() override { platform_test::fakeSharing = nullptr; }

  static void share(int source, int copy) {
    char bytes[100];
    const ssize_t size = ::pread(source, bytes, sizeof bytes, 0);
    ASSERT_EQ(::pwrite(copy, bytes, static_cast<std::size_t>(size), 0), size);
    ++shared;
  }

  std::string copied() {
    EXPECT_EQ(platform::copyFile(from, to), std::nullopt);
    EXPECT_EQ(shared, 1);
    return support::contentsOf(to);
  }

  static inline int shared;
  const support::TemporaryFolder folder;
  const std::string from = folder / "from";
  const std::string to = folder / "to";
};

TEST_F(SharedBlocksTest, ACopyHasAllBytes) {
  EXPECT_EQ(copied(), "twenty bytes of text");
}

TEST_F(SharedBlocksTest, AFileThatShrinksIsNotPadded) {
  platform_test::fakeSharing = [this](int source, int copy) {
    ASSERT_EQ(::truncate(from.c_str(), 6), 0);
    share(source, copy);
  };
  EXPECT_EQ(copied(), "twenty");
}

TEST_F(SharedBlocksTest, AppendedBytesAreOmitted) {
  platform_test::fakeSharing = [this](int source, int copy) {
    support::writeFile(from, "twenty bytes of text and more");
    share(source, copy);
  };
  EXPECT_EQ(copied(), "twenty bytes of text");
}

}  // namespace
