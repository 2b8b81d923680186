#include "platform/Volumes.h"

#include <CoreServices/CoreServices.h>

#include <cerrno>
#include <string>

#include "platform/EventLoop.h"
#include "tests/macos/doubles/Volumes.h"
#include "tests/macos/platform/PlatformTest.h"

namespace {

using platform::isCaseSensitive;
using platform::mountPointOf;
using platform::volumeNameOf;

class VolumesTest : public macos_test::PlatformTest {
 protected:
  VolumesTest() { doubles::volume = {}; }

  const platform::AutoreleaseScope scope;
};

using MountPointTest = VolumesTest;
using VolumeNameTest = VolumesTest;
using CaseRuleTest = VolumesTest;

TEST_F(MountPointTest, IsReportedByTheSystem) {
  EXPECT_EQ(mountPointOf("/proc/self/status"), "/proc");
}

TEST_F(MountPointTest, SetsErrnoOnFailure) {
  for (const int error : {ENOENT, ENAMETOOLONG, EACCES}) {
    doubles::failCall("statfs", error);
    EXPECT_EQ(mountPointOf("/"), std::nullopt);
    EXPECT_EQ(errno, error);
  }
}

TEST_F(MountPointTest, IsReadAgainAfterAnInterruption) {
  doubles::failNextCall("statfs", EINTR);
  EXPECT_EQ(mountPointOf("/proc"), "/proc");
}

TEST_F(VolumeNameTest, IsThatOfTheFileManager) {
  EXPECT_EQ(volumeNameOf("/proc/"), "Macintosh HD");
}

TEST_F(VolumeNameTest, IsConvertedToUtf8) {
  doubles::volume.name = u"\u00e4\u4e16\U0001f4be";
  EXPECT_EQ(volumeNameOf("/"), "\xc3\xa4\xe4\xb8\x96\xf0\x9f\x92\xbe");
  doubles::volume.name = std::u16string(255, u'\u4e16');
  EXPECT_EQ(volumeNameOf("/")->size(), 3 * 255u);
  doubles::volume.name = u"";
  EXPECT_EQ(volumeNameOf("/"), "");
}

TEST_F(VolumeNameTest, IsMissingIfNotValidUtf16) {
  doubles::volume.name = u"half \xd83d only";
  EXPECT_EQ(volumeNameOf("/"), std::nullopt);
}

TEST_F(VolumeNameTest, IsMissingIfACallFails) {
  EXPECT_EQ(volumeNameOf("/no/such"), std::nullopt);
  for (const char* call : {"FSGetVolumeInfo", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failNextCall(call, nsvErr);
    EXPECT_EQ(volumeNameOf("/"), std::nullopt) << call;
  }
}

TEST_F(CaseRuleTest, IsReadFromTheVolumeParameters) {
  doubles::volume.extendedAttributes = 1 << 22;
  EXPECT_EQ(isCaseSensitive("/proc"), true);
  doubles::volume.extendedAttributes = ~(1 << 22);
  EXPECT_EQ(isCaseSensitive("/proc"), false);
}

TEST_F(CaseRuleTest, IsInsensitiveForOldParameterVersions) {
  doubles::volume = {u"old", 2, -1};
  EXPECT_EQ(isCaseSensitive("/"), false);
  doubles::volume.recordVersion = 3;
  EXPECT_EQ(isCaseSensitive("/"), true);
}

TEST_F(CaseRuleTest, IsMissingIfACallFails) {
  EXPECT_EQ(isCaseSensitive("/no/such"), std::nullopt);
  for (const char* call : {"FSGetVolumeParms", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failNextCall(call, nsvErr);
    EXPECT_EQ(isCaseSensitive("/"), std::nullopt) << call;
  }
}

}  // namespace
