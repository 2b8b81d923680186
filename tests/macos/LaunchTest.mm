#include "tests/macos/CocoaTest.h"

#include <string>

namespace {

using testing::Contains;
using testing::Not;

class LaunchTest : public CocoaTest {
 protected:
  static std::string bundlePath() { return doubles::text([[NSBundle mainBundle] bundlePath]); }
};

TEST_F(LaunchTest, FollowsTheLaunchSequence) {
  options().app_name = "Kelvo";
  const Calls calls = launch();
  EXPECT_EQ(calls, (Calls{"preferences",
                          "setJavaEnabled NO",
                          "setPlugInsEnabled NO",
                          "setJavaScriptEnabled YES",
                          "setLoadsImagesAutomatically YES",
                          "setTabsToLinks YES",
                          "setJavaScriptCanOpenWindowsAutomatically YES",
                          "setFrameLoadDelegate AppDelegate",
                          "setContentView WebView",
                          "setPolicyDelegate AppDelegate",
                          "setUIDelegate NewWindows",
                          "application setDelegate AppDelegate",
                          "activateIgnoringOtherApps YES",
                          "makeFirstResponder WebView",
                          "window frame",
                          "webView frame",
                          "window setFrame 99,199 680x570 display YES animate YES",
                          "webView setFrame 1,1 680x550",
                          "loadHTMLString " + spinnerHTMLSource + " base " + spinnerHTMLBaseURL,
                          "setTitle Kelvo"}));
}

TEST_F(LaunchTest, SetsTheSizesAndKeepsTheOrigins) {
  const NSPoint before = [window frame].origin;
  launch();
  EXPECT_EQ(doubles::text([window frame]), doubles::text(NSMakeRect(before.x, before.y, 680, 570)));
  EXPECT_EQ(doubles::text([webView frame].size), "680x550");
}

TEST_F(LaunchTest, GivesTheWebViewTheKeyboardFocus) {
  launch();
  EXPECT_EQ([window contentView], webView);
  EXPECT_EQ([window firstResponder], webView);
}

TEST_F(LaunchTest, SetsTheDelegates) {
  launch();
  EXPECT_EQ([NSApp delegate], delegate);
  EXPECT_EQ([webView frameLoadDelegate], delegate);
  EXPECT_EQ([webView policyDelegate], delegate);
}

TEST_F(LaunchTest, WithoutPreferencesTheWindowIsUnchanged) {
  doubles::failCall("preferences");
  options().app_name = "Kelvo";
  EXPECT_EQ(launch(), Calls{"preferences"});
  EXPECT_EQ(spinnerHTMLBaseURL, "");
  EXPECT_EQ(message(), "");
}

TEST_F(LaunchTest, WithoutPreferencesResizingDoneIsReset) {
  doubles::failCall("preferences");
  [delegate setResizingDone:YES];
  launch();
  EXPECT_FALSE([delegate resizingDone]);
}

TEST_F(LaunchTest, KeepsTheTitleWithoutAProductName) {
  EXPECT_THAT(launch(), Not(Contains(testing::HasSubstr("setTitle"))));
  EXPECT_EQ(doubles::text([window title]), "From the interface file");
}

TEST_F(LaunchTest, SetsTitlesInEveryScript) {
  options().app_name = "K\xC3\xA9lvo \xE7\x99\xBB\xE5\xBD\x95";
  launch();
  EXPECT_EQ(doubles::text([window title]), options().app_name);
}

TEST_F(LaunchTest, KeepsTheTitleForAnInvalidProductName) {
  options().app_name = "Kelvo\xFF";
  launch();
  EXPECT_EQ(doubles::text([window title]), "From the interface file");
}

TEST_F(LaunchTest, PlacesTheSpinnerPageBesideTheBundle) {
  launch();
  EXPECT_EQ(spinnerHTMLBaseURL, "file://" + bundlePath() + "spinner_html.html");
}

TEST_F(LaunchTest, KeepsTheStyleOfTheWindow) {
  const NSUInteger before = [window styleMask];
  launch();
  EXPECT_EQ([window styleMask], before);
  EXPECT_FALSE([[window standardWindowButton:NSWindowZoomButton] isEnabled]);
}

TEST_F(LaunchTest, AStartedProvisionalLoadIsIgnored) {
  signIn();
  [delegate webView:webView didStartProvisionalLoadForFrame:mainFrame()];
  EXPECT_EQ(doubles::takeCalls(), Calls{});
}

}  // namespace
