#include "platform/Desktop.h"
#include "tests/macos/platform/SystemTest.h"

namespace {

using platform::RaiseResult;
using testing::ElementsAre;
using testing::IsEmpty;
using OpenUrlTest = macos_test::SystemTest;
using FrontingTest = macos_test::SystemTest;
using NotificationsTest = macos_test::SystemTest;

TEST_F(OpenUrlTest, AnAddressIsHandedToTheWorkspaceWhoseAnswerCounts) {
  EXPECT_TRUE(platform::openUrl("https://h/a%20b?c#d"));
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("sharedWorkspace", "openURL: https://h/a%20b?c#d"));
  EXPECT_FALSE(platform::openUrl("nobody-such:x"));
  doubles::failCall("openURL:", 1);
  EXPECT_FALSE(platform::openUrl("https://h/"));
}

TEST_F(OpenUrlTest, ATextThatIsNoAddressIsNotHandedOn) {
  for (const char* text : {"", "not a url", "http://h/a b", "h/a", "http://h/\xC3\xA4", "http://h/\xFF"})
    EXPECT_FALSE(platform::openUrl(text)) << text;
  EXPECT_THAT(doubles::takenCalls(), IsEmpty());
}

TEST_F(OpenUrlTest, BracketsNeedNoEscape) {
  for (const char* text : {"https://h/?a[]=1", "http://h/[a]", "http://[::1]:8080/#["}) {
    EXPECT_TRUE(platform::openUrl(text)) << text;
    EXPECT_THAT(doubles::takenCalls(), ElementsAre("sharedWorkspace", std::string("openURL: ") + text));
  }
  EXPECT_FALSE(platform::openUrl("ht[tp://h/"));
  EXPECT_FALSE(platform::openUrl("[http://h/]"));
}

TEST_F(FrontingTest, AProcessIsBroughtToTheFrontByItsNumber) {
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kRaised);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("GetProcessForPID 1", "SetFrontProcess 0,1"));
}

TEST_F(FrontingTest, AProcessThatIsNoApplicationYetIsUnknown) {
  doubles::failCall("GetProcessForPID", -600);
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kNotFound);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("GetProcessForPID 1"));
}

TEST_F(FrontingTest, AProcessThatMayNotBeInFrontIsImpossible) {
  doubles::failCall("SetFrontProcess", -606);
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kFailed);
}

TEST_F(NotificationsTest, AreForAllSessionsWithoutFurtherInformation) {
  platform::postToAllSessions("org.x.Stop", "org.x.Agent");
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("postNotificationName: org.x.Stop object: org.x.Agent userInfo: nil options: 2"));
}

TEST_F(NotificationsTest, ATextThatIsNoneIsNotPosted) {
  platform::postToAllSessions("org.x.\xFF", "org.x.Agent");
  platform::postToAllSessions("org.x.Stop", "\xFF");
  EXPECT_THAT(doubles::takenCalls(), IsEmpty());
}

TEST_F(NotificationsTest, WithoutACentreNothingHappens) {
  doubles::failCall("defaultCenter", 1);
  platform::postToAllSessions("org.x.Stop", "org.x.Agent");
  EXPECT_THAT(doubles::takenCalls(), IsEmpty());
}

}  // namespace
