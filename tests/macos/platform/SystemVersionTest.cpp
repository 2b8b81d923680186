#include "platform/Machine.h"

#include <array>
#include <utility>

#include "logging/Helpers.h"
#include "tests/macos/platform/SystemTest.h"

namespace {

using platform::VersionPart;
using testing::ElementsAre;

using SystemVersionTest = macos_test::SystemTest;

TEST_F(SystemVersionTest, IsAskedForNumberByNumber) {
  const auto version = platform::systemVersion();
  ASSERT_TRUE(version);
  EXPECT_EQ(version->major, 10);
  EXPECT_EQ(version->minor, 15);
  EXPECT_EQ(version->bugFix, 7);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("Gestalt sys1", "Gestalt sys2", "Gestalt sys3"));
}

TEST_F(SystemVersionTest, OneNumberIsAskedForAlone) {
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kMinor), 15);
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kBugFix), 7);
  EXPECT_EQ(platform::systemVersionPart(VersionPart::kMajor), 10);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("Gestalt sys2", "Gestalt sys3", "Gestalt sys1"));
}

TEST_F(SystemVersionTest, TheFirstNumberThatIsNotToldIsTheLastAskedFor) {
  int major = -1, minor = -1, bugFix = -1;
  for (const auto& [call, count] : {std::pair("Gestalt sys3", 3u), {"Gestalt sys2", 2u}, {"Gestalt sys1", 1u}}) {
    doubles::failCall(call, -5551);
    EXPECT_FALSE(tarn::utilGetCurrentOSVersion(major, minor, bugFix)) << call;
    EXPECT_EQ(doubles::takenCalls().size(), count);
  }
  EXPECT_THAT((std::array{major, minor, bugFix}), ElementsAre(-1, -1, -1));
}

}  // namespace
