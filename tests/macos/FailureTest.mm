#include "tests/macos/CocoaTest.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;

class FailureTest : public CocoaTest {
 protected:
  FailureTest() { signIn(); }

  // Returns whether the application was terminated since the last call.
  static bool terminated() { return testing::Matches(Contains("terminate"))(doubles::takeCalls()); }
};

TEST_F(FailureTest, AFailedLoadEndsTheRunWith2) {
  EXPECT_THAT(fail(mainFrame(), "http://host/a?b=c", -1003),
              ElementsAre("didFailLoadWithError for URL http://host/a?b=c", "didFailLoadWithError Error code -1003",
                          MatchesRegex("didFailLoadWithError Error domain -?[0-9]+")));
  EXPECT_TRUE(terminated());
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, AProvisionalFailureHasItsOwnLogLines) {
  EXPECT_THAT(fail(mainFrame(), "http://host/a", -1003, true),
              ElementsAre("didFailProvisionalLoadWithError for URL " + spinnerHTMLBaseURL,
                          "didFailProvisionalLoadWithError Error code -1003",
                          MatchesRegex("didFailProvisionalLoadWithError Error domain -?[0-9]+")));
  EXPECT_TRUE(terminated());
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, AFrameWithoutAPageHasNoAddress) {
  WebFrame* const frame = [[WebFrame alloc] initWithWebView:webView];
  EXPECT_THAT(fail(frame, "http://host/a", -1003, true),
              ElementsAre("didFailProvisionalLoadWithError Error code -1003",
                          MatchesRegex("didFailProvisionalLoadWithError Error domain -?[0-9]+")));
  [frame release];
}

TEST_F(FailureTest, ACancelledLoadDoesNotEndTheRun) {
  for (const bool provisional : {false, true}) {
    EXPECT_THAT(fail(mainFrame(), "http://host/", -999, provisional), SizeIs(3));
    EXPECT_FALSE(terminated());
  }
  EXPECT_EQ(message(), "");
}

TEST_F(FailureTest, ALostConnectionDoesNotEndTheRun) {
  for (const bool provisional : {false, true}) {
    EXPECT_THAT(fail(mainFrame(), "http://host/", -1005, provisional), SizeIs(3));
    EXPECT_FALSE(terminated());
  }
  EXPECT_EQ(message(), "");
}

TEST_F(FailureTest, EveryOtherCodeEndsTheRun) {
  for (const NSInteger code : {-998, -1000, -1004, -1006, 0, 102, 999}) {
    AppDelegate* const other = [[AppDelegate alloc] init];
    [other webView:webView
        didFailLoadWithError:[NSError errorWithDomain:@"Other" code:code userInfo:nil]
                    forFrame:mainFrame()];
    EXPECT_TRUE(terminated()) << code;
    [other release];
  }
}

TEST_F(FailureTest, IgnoredCodesAreIgnoredInEveryDomain) {
  [delegate webView:webView
      didFailLoadWithError:[NSError errorWithDomain:@"Other" code:-999 userInfo:nil]
                  forFrame:mainFrame()];
  EXPECT_EQ(message(), "");
}

TEST_F(FailureTest, AFailedSubFrameEndsTheRun) {
  WebFrame* const frame = [[WebFrame alloc] initWithWebView:webView];
  fail(frame, "http://advertisement/", -1003, true);
  EXPECT_TRUE(terminated());
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
  [frame release];
}

TEST_F(FailureTest, AFailureWithoutAddressLogsCodeAndDomain) {
  doubles::failCall("request");
  EXPECT_THAT(
      fail(mainFrame(), "http://host/", 102),
      ElementsAre("didFailLoadWithError Error code 102", MatchesRegex("didFailLoadWithError Error domain -?[0-9]+")));
  EXPECT_TRUE(terminated());
}

TEST_F(FailureTest, AFailureWithoutAnErrorIsAFailure) {
  [delegate webView:webView didFailLoadWithError:nil forFrame:nil];
  EXPECT_TRUE(terminated());
}

TEST_F(FailureTest, OneFailureEndsTheRunOnce) {
  fail(mainFrame(), "http://host/", -1003);
  EXPECT_TRUE(terminated());
  EXPECT_THAT(fail(mainFrame(), "http://host/", -1003), IsEmpty());
  EXPECT_FALSE(terminated());
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, ClosingTheWindowReports1) {
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
  EXPECT_EQ(message(), "<errorNo><error>1</error></errorNo>");
  EXPECT_FALSE(terminated());
}

TEST_F(FailureTest, ClosingTheWindowTerminatesWithoutAReader) {
  options().pipe_name = "/nonexistent/pipe";
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
}

}  // namespace
