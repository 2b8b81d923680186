#include "platform/FileKind.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/support/Files.h"
#include "tests/support/Trees.h"

namespace {

class FileKindTest : public testing::Test {
 protected:
  FileKindTest() { support::makeSmallTree(folder / "t"); }

  const support::TemporaryFolder folder;
};

TEST_F(FileKindTest, ComparesEntriesByFolderAndName) {
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a/file", folder / "t/to a/file"));
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a", folder / "t//./a/"));
  EXPECT_TRUE(platform::isSameEntry(folder / "t/missing", folder / "t/a/../missing"));
  EXPECT_FALSE(platform::isSameEntry(folder / "t/a/file", folder / "t/file"));
  EXPECT_FALSE(platform::isSameEntry(folder / "t/a/file", folder / "t/a/other"));
  EXPECT_FALSE(platform::isSameEntry(folder / "missing/a", folder / "missing/a"));
}

TEST_F(FileKindTest, RecognizesALinkToAnObject) {
  EXPECT_TRUE(platform::isLinkTo(folder / "t/to a", folder / "t/a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/a", folder / "t/a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/to a", folder / "t/to a"));
  EXPECT_FALSE(platform::isLinkTo(folder / "t/dangling", folder / "t/dangling"));
}

TEST_F(FileKindTest, EndsPathsAtTheFirstNul) {
  using namespace std::string_literals;
  EXPECT_TRUE(platform::isSameEntry(folder / "t/a\0/x"s, folder / "t/a"));
  EXPECT_TRUE(platform::isRemovedWith(folder / "t/a\0/x"s, folder / "t/a/."));
}

}  // namespace
