#include <gtest/gtest.h>
#include <linux/fs.h>

#include "platform/Volumes.h"
#include "tests/platform/FakeFileSystem.h"
#include "tests/support/Files.h"

namespace {

using platform::isCaseSensitive;
using namespace platform_test;

class CaseRuleTest : public testing::Test {
 protected:
  ~CaseRuleTest() override {
    fakeType.reset();
    fakeFlags.reset();
  }

  const support::TemporaryFolder folder;
};

TEST_F(CaseRuleTest, IsTheTypesWhereItHasOnlyOne) {
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

TEST_F(CaseRuleTest, IsTheFoldersWhereFoldersDiffer) {
  fakeFlags = FS_CASEFOLD_FL | FS_EXTENT_FL;
  EXPECT_EQ(isCaseSensitive(folder.path()), false);
  fakeFlags = FS_EXTENT_FL;
  EXPECT_EQ(isCaseSensitive(folder.path()), true);
}

TEST_F(CaseRuleTest, OfAFileIsThatOfItsFolder) {
  support::writeFile(folder / "file", "");
  fakeFlags = FS_CASEFOLD_FL;
  EXPECT_EQ(isCaseSensitive(folder / "file"), false);
  EXPECT_EQ(filesAsked, 0);
}

}  // namespace
