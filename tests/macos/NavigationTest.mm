#include "tests/macos/CocoaTest.h"

#include <ostream>
#include <string>

#include "tests/macos/doubles/FailingUrl.h"

namespace {

using testing::Contains;
using testing::HasSubstr;

// The calls for every finished main frame, before the flow decides.
const Calls kAddressCalls = {"setAllowsScrolling NO"};

Calls addressCallsAnd(const Calls& rest) {
  Calls all = kAddressCalls;
  all.insert(all.end(), rest.begin(), rest.end());
  return all;
}

class NavigationTest : public CocoaTest {
 protected:
  // What the legacy web view does for a script's `window.open`: it asks for a web view without a request, and loads the
  // address into that web view.
  WebView* openWindow(const std::string& address) {
    WebView* const created = [[webView UIDelegate] webView:webView createWebViewWithRequest:nil];
    navigate(created, [created mainFrame], address);
    return created;
  }

  static void navigate(WebView* view, WebFrame* frame, const std::string& address) {
    [[view policyDelegate] webView:view
        decidePolicyForNavigationAction:[NSDictionary dictionary]
                                request:requestFor(address)
                                  frame:frame
                       decisionListener:[PolicyListener listener]];
  }
};

TEST_F(NavigationTest, TheFinishedSpinnerPageStartsTheSignIn) {
  launch();
  EXPECT_EQ(finish(spinnerHTMLBaseURL), addressCallsAnd({"loadRequest cb:/Host/Login"}));
  EXPECT_EQ(message(), "");
}

TEST_F(NavigationTest, AReloadedSpinnerPageRestartsTheSignIn) {
  signIn();
  EXPECT_EQ(finish(spinnerHTMLBaseURL), addressCallsAnd({"loadRequest cb:/Host/Login"}));
}

struct Missing {
  const char* option;
  std::string CommandLine::*field;

  friend void PrintTo(const Missing& missing, std::ostream* out) { *out << missing.option; }
};

class MissingOptionTest : public NavigationTest, public testing::WithParamInterface<Missing> {};

TEST_P(MissingOptionTest, EndsTheRunWith255) {
  options().*GetParam().field = "";
  launch();
  EXPECT_EQ(finish(spinnerHTMLBaseURL), addressCallsAnd({"terminate"}));
  EXPECT_EQ(message(), "<errorNo><error>255</error></errorNo>");
}

INSTANTIATE_TEST_SUITE_P(Each, MissingOptionTest,
                         testing::Values(Missing{"zelURL", &CommandLine::zel_url},
                                         Missing{"redirectURL", &CommandLine::redirect_url},
                                         Missing{"redirectType3URL", &CommandLine::redirect_type3_url}),
                         [](const auto& test) { return test.param.option; });

TEST_F(NavigationTest, AnOrdinaryPageOnlyDisablesScrolling) {
  signIn();
  EXPECT_EQ(finish("cb:/host/password"), kAddressCalls);
  EXPECT_EQ(message(), "");
}

TEST_F(NavigationTest, ARedirectPageReportsItsWholeAddress) {
  signIn();
  EXPECT_EQ(finish("cb:/done?code=1&s=2"), addressCallsAnd({"terminate"}));
  EXPECT_EQ(message(), "<result><URL>cb:/done?code=1&amp;s=2</URL></result>");
}

TEST_F(NavigationTest, TheRedirectAddressIsComparedInLowerCase) {
  options().redirect_url = options().ToLowerCase("cb:/Done");
  signIn();
  EXPECT_EQ(finish("cb:/Done?code=1"), kAddressCalls);
  EXPECT_EQ(finish("cb:/done?code=1"), addressCallsAnd({"terminate"}));
}

TEST_F(NavigationTest, ASubFrameIsIgnored) {
  signIn();
  WebFrame* const frame = [[WebFrame alloc] initWithWebView:webView];
  [frame showRequest:requestFor("cb:/done?code=1")];
  [delegate webView:webView didFinishLoadForFrame:frame];
  EXPECT_EQ(doubles::takeCalls(), Calls{});
  EXPECT_EQ(message(), "");
  [frame release];
}

TEST_F(NavigationTest, AnUnreadResultEndsTheRun) {
  options().pipe_name = "/nonexistent/pipe";
  signIn();
  EXPECT_EQ(finish("cb:/done"), addressCallsAnd({"terminate"}));
}

TEST_F(NavigationTest, NothingFollowsTheMessageOfTheRun) {
  signIn();
  finish("cb:/done?1");
  EXPECT_EQ(finish("cb:/done?2"), Calls{});
  EXPECT_TRUE([delegate applicationShouldTerminateAfterLastWindowClosed:NSApp]);
  EXPECT_EQ(message(), "<result><URL>cb:/done?1</URL></result>");
}

class NoAddressTest : public NavigationTest, public testing::WithParamInterface<const char*> {};

TEST_P(NoAddressTest, APageWithoutAnAddressIsIgnored) {
  signIn();
  doubles::failCall(GetParam());
  NSURL* const address = [[[FailingURL alloc] initWithString:@"cb:/done"] autorelease];
  EXPECT_EQ(finish([NSURLRequest requestWithURL:address]), kAddressCalls);
  EXPECT_EQ(message(), "");
}

INSTANTIATE_TEST_SUITE_P(Each, NoAddressTest, testing::Values("dataSource", "request", "absoluteString", "UTF8String"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(NavigationTest, ARequestWithoutAnAddressIsIgnored) {
  signIn();
  EXPECT_EQ(finish([[[NSURLRequest alloc] init] autorelease]), kAddressCalls);
}

TEST_F(NavigationTest, AnInvalidAddressIsLoadedAsNil) {
  options().zel_url = "no address at all";
  launch();
  EXPECT_EQ(finish(spinnerHTMLBaseURL), addressCallsAnd({"loadRequest nil"}));
}

TEST_F(NavigationTest, AnAddressWithoutUtf8IsLoadedAsNil) {
  options().zel_url = "cb:/\xFF";
  launch();
  EXPECT_EQ(finish(spinnerHTMLBaseURL), addressCallsAnd({"loadRequest nil"}));
}

TEST_F(NavigationTest, ANewWindowOpensInTheBrowser) {
  signIn();
  [delegate webView:webView
      decidePolicyForNewWindowAction:[NSDictionary dictionary]
                             request:requestFor("http://host/help?a=1&b=2")
                        newFrameName:@"_blank"
                    decisionListener:[PolicyListener listener]];
  EXPECT_EQ(doubles::takeCalls(), (Calls{"ignore", "openURL http://host/help?a=1&b=2"}));
}

TEST_F(NavigationTest, ANewWindowsUrlIsPassedOnUnchanged) {
  signIn();
  NSURL* const address = [[[FailingURL alloc] initWithString:@"http://host/help"] autorelease];
  doubles::failCall("absoluteString");
  [delegate webView:webView
      decidePolicyForNewWindowAction:nil
                             request:[NSURLRequest requestWithURL:address]
                        newFrameName:nil
                    decisionListener:[PolicyListener listener]];
  EXPECT_EQ(doubles::lastOpenedUrl(), address);
}

TEST_F(NavigationTest, ANewWindowWithoutAddressIsIgnored) {
  signIn();
  [delegate webView:webView
      decidePolicyForNewWindowAction:nil
                             request:nil
                        newFrameName:nil
                    decisionListener:[PolicyListener listener]];
  EXPECT_EQ(doubles::takeCalls(), Calls{"ignore"});
}

TEST_F(NavigationTest, AScriptsWindowOpensInTheBrowser) {
  signIn();
  WebView* const created = openWindow("http://host/help?a=1&b=2");
  EXPECT_THAT(doubles::takeCalls(), testing::IsSupersetOf({"ignore", "openURL http://host/help?a=1&b=2"}));
  EXPECT_EQ([created window], nil);
  EXPECT_EQ(openWindow("http://host/next"), created);
  EXPECT_EQ(doubles::takeCalls(), (Calls{"ignore", "openURL http://host/next"}));
}

TEST_F(NavigationTest, AWindowWithARequestOpensAtOnce) {
  signIn();
  EXPECT_EQ([[webView UIDelegate] webView:webView createWebViewWithRequest:requestFor("http://host/help")], nil);
  EXPECT_EQ(doubles::takeCalls(), Calls{"openURL http://host/help"});
}

TEST_F(NavigationTest, AnEmptyScriptsWindowOpensNothing) {
  signIn();
  for (const char* const address : {"about:blank", "ABOUT:blank#top", ""}) {
    openWindow(address);
    EXPECT_THAT(doubles::takeCalls(), testing::Not(Contains(HasSubstr("openURL")))) << address;
  }
}

TEST_F(NavigationTest, AFrameOfAScriptsWindowOpensNothing) {
  signIn();
  WebView* const created = openWindow("about:blank");
  WebFrame* const frame = [[WebFrame alloc] initWithWebView:created];
  (void)doubles::takeCalls();
  navigate(created, frame, "http://host/frame");
  EXPECT_EQ(doubles::takeCalls(), Calls{"ignore"});
  [frame release];
}

TEST_F(NavigationTest, NoWindowOpensAfterTheMessage) {
  signIn();
  finish("cb:/done");
  openWindow("http://host/help");
  EXPECT_THAT(doubles::takeCalls(), testing::Not(Contains(HasSubstr("openURL"))));
}

}  // namespace
