#include "tests/macos/CocoaTest.h"

#include <string>

namespace {

using testing::ElementsAre;

class EnterpriseTest : public CocoaTest {
 protected:
  EnterpriseTest() { signIn(); }

  // Finishes a page. Returns the calls after scrolling has been disabled.
  Calls callsAfterAddress(const std::string& address) {
    Calls calls = finish(address);
    calls.erase(calls.begin());
    return calls;
  }
};

TEST_F(EnterpriseTest, TheFirstPageAppliesTheLayout) {
  options().type3_window_title = "My Company";
  [window setFrame:NSMakeRect(100, 300, 680, 570) display:NO];
  EXPECT_THAT(finish("t3:/start?redirect_uri=next:/x&y=1"), testing::Contains("loadRequest next:/x&y=1"));
  EXPECT_EQ(doubles::text([window title]), "My Company");
  EXPECT_EQ(doubles::text([window frame]), "100,270 800x620");
}

TEST_F(EnterpriseTest, TheWindowGrowsUpwardByTwenty) {
  const NSRect before = [window frame];
  finish("t3:/start");
  EXPECT_EQ(doubles::text([window frame].size), "800x620");
  EXPECT_EQ(NSMinX([window frame]), NSMinX(before));
  EXPECT_EQ(NSMaxY([window frame]), NSMaxY(before) + 20);
}

TEST_F(EnterpriseTest, TheWindowBecomesResizable) {
  const NSUInteger before = [window styleMask];
  finish("t3:/start");
  EXPECT_TRUE([delegate resizingDone]);
  EXPECT_EQ([window styleMask], before | NSWindowStyleMaskResizable);
  EXPECT_TRUE([[window standardWindowButton:NSWindowZoomButton] isEnabled]);
  EXPECT_EQ(doubles::text([window minSize]), "800x620");
}

TEST_F(EnterpriseTest, AResizableWindowStaysResizable) {
  [window setStyleMask:[window styleMask] | NSWindowStyleMaskResizable];
  const NSUInteger before = [window styleMask];
  finish("t3:/start");
  EXPECT_EQ([window styleMask], before);
}

TEST_F(EnterpriseTest, AMissingEnterpriseTitleKeepsTheTitle) {
  finish("t3:/start");
  EXPECT_EQ(doubles::text([window title]), "From the interface file");
}

TEST_F(EnterpriseTest, ASecondPageIsOnlyFollowed) {
  finish("t3:/start?redirect_uri=one:/");
  options().type3_window_title = "Other";
  EXPECT_THAT(callsAfterAddress("t3:/start?redirect_uri=two:/"), ElementsAre("loadRequest two:/"));
}

TEST_F(EnterpriseTest, TheLayoutIsAppliedOnce) {
  [delegate setResizingDone:YES];
  EXPECT_THAT(callsAfterAddress("t3:/start"), ElementsAre());
}

TEST_F(EnterpriseTest, TheRedirectUriNeedsTwoCharacters) {
  [delegate setResizingDone:YES];
  EXPECT_THAT(callsAfterAddress("t3:/start?redirect_uri=a"), ElementsAre());
  EXPECT_THAT(callsAfterAddress("t3:/start?redirect_uri=ab"), ElementsAre("loadRequest ab"));
}

TEST_F(EnterpriseTest, TheRedirectUriIsNotDecoded) {
  [delegate setResizingDone:YES];
  EXPECT_THAT(callsAfterAddress("t3:/start?redirect_uri=http%3A%2F%2Fa#b"),
              ElementsAre("loadRequest http%3A%2F%2Fa#b"));
}

TEST_F(EnterpriseTest, AnInvalidAddressIsLoadedAsNil) {
  [delegate setResizingDone:YES];
  EXPECT_THAT(callsAfterAddress("t3:/start?redirect_uri=%"), ElementsAre());
  options().zel_url = "two words";
  EXPECT_THAT(callsAfterAddress(spinnerHTMLBaseURL), ElementsAre("loadRequest nil"));
}

TEST_F(EnterpriseTest, BothPrefixesMeanAnEnterprisePage) {
  options().redirect_type3_url = "cb:/done/t3";
  [delegate setResizingDone:YES];
  EXPECT_THAT(callsAfterAddress("cb:/done/t3?redirect_uri=next:/"), ElementsAre("loadRequest next:/"));
  EXPECT_EQ(message(), "");
}

TEST_F(EnterpriseTest, TheSignInEndsAtTheRedirectAddress) {
  finish("t3:/start?redirect_uri=next:/x");
  EXPECT_THAT(callsAfterAddress("cb:/done?code=1"), ElementsAre("terminate"));
  EXPECT_EQ(message(), "<result><URL>cb:/done?code=1</URL></result>");
}

TEST_F(EnterpriseTest, ClosingTheWindowSends1) {
  finish("t3:/start");
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
  EXPECT_EQ(message(), "<errorNo><error>1</error></errorNo>");
  EXPECT_EQ(doubles::takeCalls(), Calls{});
}

}  // namespace
