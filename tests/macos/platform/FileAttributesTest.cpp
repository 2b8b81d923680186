#include <fcntl.h>
#include <sys/stat.h>

#include <array>
#include <cerrno>

#include "platform/FileCopy.h"
#include "platform/FileKind.h"
#include "platform/UniqueFd.h"
#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Files.h"

namespace {

using testing::ElementsAre;

class FileAttributesTest : public macos_test::SystemTest {
 protected:
  FileAttributesTest() {
    const std::array<timespec, 2> times{timespec{1000, 0}, timespec{2000, 0}};
    support::writeFile(folder / "from", "text");
    EXPECT_EQ(::chmod((folder / "from").c_str(), 0444), 0);
    EXPECT_EQ(::utimensat(AT_FDCWD, (folder / "from").c_str(), times.data(), 0), 0);
  }

  const support::TemporaryFolder folder;
};

TEST_F(FileAttributesTest, TheSystemCopiesExtendedAttributesAndLastTheAccessListOnly) {
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("fcopyfile 4", "fcopyfile 1 after mode 292 and time 2000"));
}

TEST_F(FileAttributesTest, TheAccessListIsCopiedEvenIfAnAttributeCannotBe) {
  doubles::failNextCall("fcopyfile", E2BIG);
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("fcopyfile 4", testing::StartsWith("fcopyfile 1")));
}

TEST_F(FileAttributesTest, WhatCannotBeKeptIsLeftOut) {
  doubles::failCall("fcopyfile", ENOTSUP);
  EXPECT_EQ(platform::copyFile(folder / "from", folder / "to"), std::nullopt);
  EXPECT_EQ(support::contentsOf(folder / "to"), "text");
}

TEST_F(FileAttributesTest, ContentsAreCopiedWithoutAttributes) {
  EXPECT_TRUE(platform::copyFileContents(folder / "from", folder / "to"));
  EXPECT_TRUE(platform::copyFileContents(folder / "from", "/dev/null"));
  EXPECT_THAT(doubles::takenCalls(), testing::IsEmpty());
}

}  // namespace
