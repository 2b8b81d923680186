#include "platform/Volumes.h"

#include <CoreServices/CoreServices.h>

#include <cerrno>

#include "platform/EventLoop.h"
#include "tests/macos/doubles/Volumes.h"
#include "tests/macos/platform/SystemTest.h"

namespace {

using platform::isCaseSensitive;
using platform::mountPointOf;
using platform::volumeNameOf;
using testing::ElementsAre;

class VolumesTest : public macos_test::SystemTest {
 protected:
  VolumesTest() { doubles::volume = {}; }

  const platform::AutoreleaseScope scope;
};

TEST_F(VolumesTest, AreMountedWhereTheSystemSays) {
  EXPECT_EQ(mountPointOf("/proc/self/status"), "/proc");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("statfs /proc/self/status"));
}

TEST_F(VolumesTest, TellWhyAPathIsOnNone) {
  for (const int error : {ENOENT, ENAMETOOLONG, EACCES}) {
    doubles::failCall("statfs", error);
    EXPECT_EQ(mountPointOf("/"), std::nullopt);
    EXPECT_EQ(errno, error);
  }
}

TEST_F(VolumesTest, AreAskedForAnewAfterAnInterruption) {
  doubles::failNextCall("statfs", EINTR);
  EXPECT_EQ(mountPointOf("/proc"), "/proc");
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("statfs /proc", "statfs /proc"));
}

TEST_F(VolumesTest, HaveTheNameThatTheFileManagerGivesThem) {
  EXPECT_EQ(volumeNameOf("/proc/"), "Macintosh HD");
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("FSPathMakeRef /proc/", "FSGetCatalogInfo /proc 4", "FSGetVolumeInfo -100 0 0"));
}

TEST_F(VolumesTest, HaveTheirNamesInUtf8) {
  doubles::volume.name = u"\u00e4\u4e16\U0001f4be";
  EXPECT_EQ(volumeNameOf("/"), "\xc3\xa4\xe4\xb8\x96\xf0\x9f\x92\xbe");
  doubles::volume.name = std::u16string(255, u'\u4e16');
  EXPECT_EQ(volumeNameOf("/")->size(), 3 * 255u);
  doubles::volume.name = u"";
  EXPECT_EQ(volumeNameOf("/"), "");
}

TEST_F(VolumesTest, HaveNoNameThatIsNoText) {
  doubles::volume.name = u"half \xd83d only";
  EXPECT_EQ(volumeNameOf("/"), std::nullopt);
}

TEST_F(VolumesTest, HaveNoNameWhenAStepFails) {
  EXPECT_EQ(volumeNameOf("/no/such"), std::nullopt);
  for (const char* step : {"FSGetVolumeInfo", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failCall(step, nsvErr);
    (void)doubles::takenCalls();
    EXPECT_EQ(volumeNameOf("/"), std::nullopt);
    EXPECT_THAT(doubles::takenCalls().back(), testing::StartsWith(step));
  }
}

TEST_F(VolumesTest, TellCaseApartWhenTheirParametersSaySo) {
  doubles::volume.extendedAttributes = 1 << 22;
  EXPECT_EQ(isCaseSensitive("/proc"), true);
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("FSPathMakeRef /proc", "FSGetCatalogInfo /proc 4",
                          "FSGetVolumeParms -100 " + std::to_string(sizeof(GetVolParmsInfoBuffer))));
  doubles::volume.extendedAttributes = ~(1 << 22);
  EXPECT_EQ(isCaseSensitive("/proc"), false);
}

TEST_F(VolumesTest, WhoseParametersAreOfAnOlderKindTakeCasesForOne) {
  doubles::volume = {u"old", 2, -1};
  EXPECT_EQ(isCaseSensitive("/"), false);
  doubles::volume.recordVersion = 3;
  EXPECT_EQ(isCaseSensitive("/"), true);
}

TEST_F(VolumesTest, TellNothingOfCaseWhenAStepFails) {
  EXPECT_EQ(isCaseSensitive("/no/such"), std::nullopt);
  for (const char* step : {"FSGetVolumeParms", "FSGetCatalogInfo", "FSPathMakeRef"}) {
    doubles::failCall(step, nsvErr);
    (void)doubles::takenCalls();
    EXPECT_EQ(isCaseSensitive("/"), std::nullopt);
    EXPECT_THAT(doubles::takenCalls().back(), testing::StartsWith(step));
  }
}

}  // namespace
