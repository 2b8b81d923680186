#include "tests/macos/CocoaTest.h"

namespace {

using testing::ElementsAre;
using testing::MatchesRegex;

class FailureTest : public CocoaTest {
 protected:
  FailureTest() { signIn(); }
};

TEST_F(FailureTest, AFailedLoadEndsTheRunWith2) {
  EXPECT_THAT(
      fail(mainFrame(), "http://host/a?b=c", -1003),
      ElementsAre("dataSource", "request", "terminate", "didFailLoadWithError for URL http://host/a?b=c",
                  "didFailLoadWithError Error code -1003", MatchesRegex("didFailLoadWithError Error domain -?[0-9]+")));
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, AProvisionalFailureHasItsOwnLogLines) {
  EXPECT_THAT(fail(mainFrame(), "http://host/a", -1003, true),
              ElementsAre("dataSource", "request", "terminate", "didFailProvisionalLoadWithError for URL http://host/a",
                          "didFailProvisionalLoadWithError Error code -1003",
                          MatchesRegex("didFailProvisionalLoadWithError Error domain -?[0-9]+")));
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, ACancelledLoadDoesNotEndTheRun) {
  for (const bool provisional : {false, true}) {
    const Calls all = fail(mainFrame(), "http://host/", -999, provisional);
    EXPECT_EQ(all.size(), 5u);
    EXPECT_THAT(all, testing::Not(testing::Contains("terminate")));
  }
  EXPECT_EQ(message(), "");
}

TEST_F(FailureTest, ALostConnectionDoesNotEndTheRun) {
  for (const bool provisional : {false, true}) {
    const Calls all = fail(mainFrame(), "http://host/", -1005, provisional);
    EXPECT_EQ(all.size(), 5u);
    EXPECT_THAT(all, testing::Not(testing::Contains("terminate")));
  }
  EXPECT_EQ(message(), "");
}

TEST_F(FailureTest, EveryOtherCodeEndsTheRun) {
  for (const NSInteger code : {-998, -1000, -1004, -1006, 0, 102, 999}) {
    AppDelegate* const other = [[AppDelegate alloc] init];
    [other webView:webView
        didFailLoadWithError:[NSError errorWithDomain:@"Other" code:code userInfo:nil]
                    forFrame:mainFrame()];
    EXPECT_THAT(doubles::takeCalls(), testing::Contains("terminate")) << code;
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
  EXPECT_THAT(fail(frame, "http://advertisement/", -1003, true), testing::Contains("terminate"));
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
  [frame release];
}

TEST_F(FailureTest, AFailureWithoutAddressLogsCodeAndDomain) {
  doubles::failCall("request");
  EXPECT_THAT(fail(mainFrame(), "http://host/", 102),
              ElementsAre("dataSource", "request", "terminate", "didFailLoadWithError Error code 102",
                          MatchesRegex("didFailLoadWithError Error domain -?[0-9]+")));
}

TEST_F(FailureTest, AFailureWithoutAnErrorIsAFailure) {
  [delegate webView:webView didFailLoadWithError:nil forFrame:nil];
  EXPECT_EQ(doubles::takeCalls(), Calls{"terminate"});
}

TEST_F(FailureTest, OneFailureEndsTheRunOnce) {
  fail(mainFrame(), "http://host/", -1003);
  EXPECT_EQ(fail(mainFrame(), "http://host/", -1003), (Calls{"dataSource", "request"}));
  EXPECT_EQ(message(), "<errorNo><error>2</error></errorNo>");
}

TEST_F(FailureTest, ClosingTheWindowReports1) {
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
  EXPECT_EQ(message(), "<errorNo><error>1</error></errorNo>");
  EXPECT_EQ(doubles::takeCalls(), Calls{});
}

TEST_F(FailureTest, ClosingTheWindowTerminatesWithoutAReader) {
  options().pipe_name = "/nonexistent/pipe";
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
}

}  // namespace
