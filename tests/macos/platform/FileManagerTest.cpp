// The double itself, as far as what is tested over it relies on it.

#include "tests/macos/doubles/FileManager.h"

#include "tests/macos/platform/SystemTest.h"
#include "tests/support/Files.h"

#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace {

using FileManagerTest = macos_test::SystemTest;

const UInt8* bytesOf(const char* text) {
  return reinterpret_cast<const UInt8*>(text);
}

TEST_F(FileManagerTest, AReferenceGivesTheRealPathOfWhatItWasMadeFor) {
  FSRef reference = {};
  Boolean isFolder = 0;
  ASSERT_EQ(FSPathMakeRef(bytesOf("/usr/../usr/./bin/"), &reference, &isFolder), noErr);
  EXPECT_EQ(isFolder, 1);
  char path[1024] = {};
  EXPECT_EQ(FSRefMakePath(&reference, reinterpret_cast<UInt8*>(path), sizeof path), noErr);
  EXPECT_STREQ(path, "/usr/bin");
  EXPECT_THAT(doubles::takenCalls(),
              testing::ElementsAre("FSPathMakeRef /usr/../usr/./bin/", "FSRefMakePath /usr/bin 1024"));
}

TEST_F(FileManagerTest, NoReferenceIsMadeForAPathAtWhichNothingIs) {
  FSRef reference = {};
  EXPECT_EQ(FSPathMakeRef(bytesOf("/no-such-thing"), &reference, nullptr), fnfErr);
  EXPECT_EQ(FSPathMakeRef(bytesOf("/etc/passwd/x"), &reference, nullptr), errFSNotAFolder);
  EXPECT_EQ(doubles::pathOf(reference), "");
}

TEST_F(FileManagerTest, APathThatDoesNotFitIsNotMade) {
  const FSRef reference = doubles::referenceTo("/abc");
  UInt8 path[5] = {};
  EXPECT_EQ(FSRefMakePath(&reference, path, 4), pathTooLongErr);
  EXPECT_EQ(FSRefMakePath(&reference, path, 5), noErr);
}

}  // namespace
