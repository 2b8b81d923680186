// The enterprise sign-in: the larger window and the redirect_uri address.

#include "tests/tools/hand/AutomatedInput.h"

#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"
#include "tests/tools/site/SignInSite.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

class EnterpriseTest : public EndToEndTest {
 protected:
  EnterpriseTest() {
    site.serve("/signin", redirectTo(startWith("/staff")));
    site.serve("/staff", page("staff"));
  }

  // An enterprise address whose redirect_uri is a page of the site.
  std::string startWith(const std::string& target) const {
    return site.address("/start?redirect_uri=" + site.address(target));
  }

  ScreenWindow windowOfSize(int width, int height) {
    ScreenWindow found;
    until("the size of the window", [&] {
      found = window();
      return found.frame.width == width && found.frame.height == height;
    });
    return found;
  }
};

TEST_F(EnterpriseTest, AUserSignsInWithTheOrganization) {
  tools::SignInSite example;
  options.signIn = example.signInAddress();
  options.redirect = example.redirectAddress();
  options.enterprise = example.enterpriseAddress();

  start();
  tools::AutomatedInput(example, display.name(), temporary("")).signInWithTheOrganization();

  EXPECT_THAT(message(), testing::StartsWith("<result><URL>" + example.redirectAddress() + "?code="));
  EXPECT_THAT(pipe.text(), testing::EndsWith("&amp;state=enterprise</URL></result>"));
}

TEST_F(EnterpriseTest, TheWholeRedirectUriIsFollowed) {
  site.serve("/staff", pageThatGoesTo(site.address("/done?code=1")));
  site.serve("/signin", redirectTo(startWith("/staff?a=%26&b=2")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
  EXPECT_THAT(site.requestLines(), testing::Contains("GET /staff?a=%26&b=2"));
}

TEST_F(EnterpriseTest, TheWindowGrowsUpwardByTwenty) {
  site.hold("/signin");
  start();
  const ScreenWindow before = windowOfSize(680, 570);
  site.release("/signin");
  const ScreenWindow after = windowOfSize(800, 620);
  EXPECT_EQ(after.frame.x, before.frame.x);
  until("the new place", [&] { return window().frame.y == before.frame.y - 20; });
}

TEST_F(EnterpriseTest, TheWindowGetsItsTitleAndIsResizable) {
  start();
  untilRequested("/staff");
  until("the title", [&] { return window().title == "Example Enterprise"; });
  windowOfSize(800, 620);
  until("the limits", [&] { return !screen.sizeLimitsOf(window().id).fixed; });
  EXPECT_EQ(screen.sizeLimitsOf(window().id).minWidth, 800);
  EXPECT_EQ(screen.sizeLimitsOf(window().id).minHeight, 620);
}

TEST_F(EnterpriseTest, AMissingEnterpriseTitleKeepsTheTitle) {
  options.enterpriseTitle.reset();
  start();
  untilRequested("/staff");
  windowOfSize(800, 620);
  EXPECT_EQ(window().title, "Example Product");
}

TEST_F(EnterpriseTest, ASecondEnterprisePageIsFollowedToo) {
  site.serve("/staff", pageThatGoesTo(startWith("/second")));
  site.serve("/second", pageThatGoesTo(site.address("/done?code=2")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=2")));
}

TEST_F(EnterpriseTest, ASecondEnterprisePageKeepsTheWindowsFrame) {
  site.serve("/staff", pageThatWaitsForAClick(startWith("/second")));
  site.serve("/second", pageThatReportsItsLoad());
  start();
  untilRequested("/clickable");
  screen.place(windowOfSize(800, 620).id, {40, 60, 900, 700});
  windowOfSize(900, 700);
  click();
  untilRequested("/loaded");
  const Area frame = window().frame;
  EXPECT_THAT((std::vector<int>{frame.x, frame.y, frame.width, frame.height}), ElementsAre(40, 60, 900, 700));
}

TEST_F(EnterpriseTest, BothPrefixesMeanAnEnterprisePage) {
  options.redirect = site.address("/start");
  site.serve("/staff", pageThatReportsItsLoad());
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(EnterpriseTest, AnEnterprisePageWithoutRedirectUriStays) {
  site.serve("/signin", redirectTo(site.address("/start?redirect_uri=x")));
  start();
  windowOfSize(800, 620);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /start?redirect_uri=x"));
}

class RefusedRedirectTest : public EnterpriseTest, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedRedirectTest, LeavesTheEnterprisePageInPlace) {
  site.serve("/signin", redirectTo(site.address(std::string("/start?redirect_uri=") + GetParam())));
  start();
  untilLogSays("The redirect_uri of the enterprise page is not followed: its scheme is refused");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(site.requestLines(), testing::Not(testing::Contains("GET /ran")));
}

INSTANTIATE_TEST_SUITE_P(To, RefusedRedirectTest,
                         testing::Values("javascript:fetch('/ran')", "JavaScript:fetch('/ran')",
                                         "data:text/html,<p>x</p>", "about:blank", "webkit://gpu",
                                         "resource:///org/gtk/libgtk/theme/Adwaita/gtk.css", "file:///etc/hostname"));

}  // namespace
}  // namespace endtoend
