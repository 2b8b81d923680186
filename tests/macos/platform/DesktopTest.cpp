#include "platform/Desktop.h"

#include <sys/stat.h>

#include <string>

#include "tests/macos/doubles/Desktop.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using platform::launchInForeground;
using platform::LaunchResult;
using platform::RaiseResult;

class DesktopTest : public macos_test::PlatformTest {
 protected:
  DesktopTest() { doubles::desktop = {}; }
};

using OpenUrlTest = DesktopTest;
using RaisingTest = DesktopTest;
using NotificationTest = DesktopTest;

TEST_F(OpenUrlTest, OpensTheUrlInTheWorkspace) {
  EXPECT_TRUE(platform::openUrl("https://h/a%20b?c#d"));
  EXPECT_EQ(doubles::desktop.openedUrl, "https://h/a%20b?c#d");
}

TEST_F(OpenUrlTest, FailsIfTheWorkspaceFails) {
  EXPECT_FALSE(platform::openUrl("unknown-scheme:x"));
  doubles::failCall("openURL:");
  EXPECT_FALSE(platform::openUrl("https://h/"));
}

TEST_F(OpenUrlTest, RejectsATextThatIsNotAUrl) {
  for (const char* text : {"", "not a url", "http://h/a b", "h/a", "http://h/\xC3\xA4", "http://h/\xFF"})
    EXPECT_FALSE(platform::openUrl(text)) << text;
  EXPECT_EQ(doubles::desktop.openedUrl, std::nullopt);
}

TEST_F(OpenUrlTest, AcceptsUnescapedBrackets) {
  for (const char* text : {"https://h/?a[]=1", "http://h/[a]", "http://[::1]:8080/#["}) {
    EXPECT_TRUE(platform::openUrl(text)) << text;
    EXPECT_EQ(doubles::desktop.openedUrl, text);
  }
  EXPECT_FALSE(platform::openUrl("ht[tp://h/"));
  EXPECT_FALSE(platform::openUrl("[http://h/]"));
}

TEST_F(RaisingTest, RaisesTheProcess) {
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kRaised);
  EXPECT_EQ(doubles::desktop.frontProcess, 1);
}

TEST_F(RaisingTest, AProcessWithoutWindowsIsNotFound) {
  doubles::failCall("GetProcessForPID", -600);
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kNotFound);
}

TEST_F(RaisingTest, ARefusedProcessFails) {
  doubles::failCall("SetFrontProcess", -606);
  EXPECT_EQ(platform::raiseWindow(1), RaiseResult::kFailed);
}

TEST_F(NotificationTest, IsPostedToAllSessions) {
  platform::postToAllSessions("org.x.Stop", "org.x.Agent");
  ASSERT_TRUE(doubles::desktop.notification);
  EXPECT_EQ(doubles::desktop.notification->name, "org.x.Stop");
  EXPECT_EQ(doubles::desktop.notification->object, "org.x.Agent");
  EXPECT_FALSE(doubles::desktop.notification->hasUserInfo);
  EXPECT_TRUE(doubles::desktop.notification->forAllSessions);
}

TEST_F(NotificationTest, IsNotPostedWithInvalidUtf8) {
  platform::postToAllSessions("org.x.\xFF", "org.x.Agent");
  platform::postToAllSessions("org.x.Stop", "\xFF");
  EXPECT_FALSE(doubles::desktop.notification);
}

TEST_F(NotificationTest, IsDroppedWithoutANotificationCenter) {
  doubles::failCall("defaultCenter");
  platform::postToAllSessions("org.x.Stop", "org.x.Agent");
  EXPECT_FALSE(doubles::desktop.notification);
}

class LauncherTest : public DesktopTest {
 protected:
  void TearDown() override { EXPECT_TRUE(macos_test::waitForTasks()); }

  std::string program(const std::string& script) const {
    const std::string path = folder / "a tool";
    support::writeFile(path, "#!/bin/sh\n" + script + "\n");
    ::chmod(path.c_str(), 0755);
    return path;
  }

  const support::TemporaryFolder folder;
};

TEST_F(LauncherTest, StartsTheProgramWithItsArguments) {
  const std::string path = program("printf '%s|' \"$@\" >'" + (folder / "seen") + "'; mv '" + (folder / "seen") +
                                   "' '" + (folder / "done") + "'");
  const LaunchResult launch = launchInForeground(path, {"a b", "", "\xC3\xA4\""});
  EXPECT_TRUE(launch.launched);
  EXPECT_FALSE(launch.failure);
  EXPECT_TRUE(support::becomesTrue([&] { return support::contentsOf(folder / "done") == "a b||\xC3\xA4\"|"; }));
}

TEST_F(LauncherTest, FailsWithoutAnActivationEvent) {
  for (const char* call : {"AECreateDesc", "AECreateAppleEvent"}) {
    doubles::failNextCall(call, -108);
    const LaunchResult launch = launchInForeground("/no/such", {});
    EXPECT_FALSE(launch.launched) << call;
    EXPECT_FALSE(launch.failure) << call;
  }
}

TEST_F(LauncherTest, ReportsWhyAFileHasNoReference) {
  const LaunchResult launch = launchInForeground("/no/such", {});
  EXPECT_FALSE(launch.launched);
  ASSERT_TRUE(launch.failure);
  EXPECT_EQ(launch.failure->error, "fnfErr");
  EXPECT_EQ(launch.failure->comment, "File not found");
}

TEST_F(LauncherTest, ReportsAnErrorThatHasNoText) {
  doubles::failCall("GetMacOSStatusErrorString");
  doubles::failCall("GetMacOSStatusCommentString");
  const LaunchResult launch = launchInForeground("/no/such", {});
  ASSERT_TRUE(launch.failure);
  EXPECT_EQ(launch.failure->error, "");
  EXPECT_EQ(launch.failure->comment, "");
}

TEST_F(LauncherTest, ARefusedLaunchIsNotAReferenceFailure) {
  doubles::failCall("LSOpenApplication", -10810);
  const LaunchResult launch = launchInForeground("/bin/true", {});
  EXPECT_FALSE(launch.launched);
  EXPECT_FALSE(launch.failure);
}

TEST_F(LauncherTest, RejectsAnArgumentThatIsNotUtf8) {
  EXPECT_FALSE(launchInForeground("/bin/true", {"\xFF"}).launched);
  EXPECT_FALSE(support::hasChildren());
}

}  // namespace
