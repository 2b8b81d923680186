// Requests for a new window open in the default browser. The sign-in page stays.

#include "tests/endtoend/EndToEndTest.h"

#include <cstddef>
#include <string>

#include "tests/endtoend/FakeBrowser.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

class NewWindowTest : public EndToEndTest {
 protected:
  NewWindowTest() { options.environment.merge(browser.environment()); }

  void untilOpened(std::size_t count) {
    until("the browser", [&] { return browser.opened().size() >= count; });
  }

  FakeBrowser browser{temporary("browser")};
};

TEST_F(NewWindowTest, ATargetLinkOpensInTheBrowser) {
  site.serve("/signin",
             pageThatReportsItsLoad("<a href='/help' target='_blank' style='position:fixed;inset:0'>help</a>"));
  start();
  untilRequested("/loaded");
  click();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), ElementsAre(site.address("/help")));
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /loaded"));
}

TEST_F(NewWindowTest, AScriptsWindowOpensInTheBrowser) {
  site.serve("/signin", page("<script>onload = () => window.open('/popup')</script>"));
  start();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), ElementsAre(site.address("/popup")));
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin"));
}

TEST_F(NewWindowTest, AnOpenedWindowIsNullForItsPage) {
  site.serve("/signin", page("<script>onload = () => fetch('/opened?' + open('/popup'))</script>"));
  start();
  untilOpened(1);
  untilRequested("/opened?null");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(NewWindowTest, AMailAddressOpensOutside) {
  site.serve("/signin", pageThatReportsItsLoad("<a href='mailto:help@host' style='position:fixed;inset:0'>help</a>"));
  start();
  untilRequested("/loaded");
  click();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), ElementsAre("mailto:help@host"));
}

TEST_F(NewWindowTest, OneClickOpensAtMostThreeMails) {
  site.serve("/signin", pageThatReportsItsLoad(
                            "<a style='position:fixed;inset:0'></a><script>"
                            "let clicked = false; onclick = (event) => { if (clicked) return; clicked = true; "
                            "for (let i = 0; i < 30; ++i) { const mail = document.createElement('a'); "
                            "mail.href = 'mailto:help' + i + '@host'; mail.click() } "
                            "requestAnimationFrame(() => requestAnimationFrame(() => fetch('/clicked'))) }</script>"));
  start();
  untilRequested("/loaded");
  click();
  untilRequested("/clicked");
  untilOpened(3);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), testing::SizeIs(3));
}

TEST_F(NewWindowTest, EachRequestOpensOnce) {
  site.serve("/signin", pageThatReportsItsLoad("<a href='/help' target='_blank' style='position:fixed;inset:0'>help</a>"
                                               "<script>document.querySelector('a').onclick = () => "
                                               "setTimeout(() => window.open('/popup'), 0)</script>"));
  start();
  untilRequested("/loaded");
  click();
  untilOpened(2);
  click();
  untilOpened(4);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), testing::UnorderedElementsAre(site.address("/help"), site.address("/popup"),
                                                              site.address("/help"), site.address("/popup")));
}

TEST_F(NewWindowTest, RedirectAddressesInNewWindowsAreIgnored) {
  site.serve("/signin", page("<script>onload = () => window.open('/done?code=1')</script>"));
  start();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(NewWindowTest, APageOpensThreeWindowsPerUserInput) {
  site.serve("/signin", page("<body style='height: 540px'><script>let clicks = 0; const storm = () => {"
                             "for (let i = 0; i < 100; ++i) open('/popup?' + clicks); fetch('/opened?' + clicks) };"
                             "onload = storm; onclick = () => { ++clicks; storm() }</script>"));
  const auto popup = [this](int clicks) { return site.address("/popup?" + std::to_string(clicks)); };
  start();
  untilRequested("/opened?0");
  untilOpened(3);
  click();
  untilRequested("/opened?1");
  untilOpened(6);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(), ElementsAre(popup(0), popup(0), popup(0), popup(1), popup(1), popup(1)));
}

// Each click opens one address. Only the last is allowed outside; when it opens, the others would have opened before.
TEST_F(NewWindowTest, OnlyWebAndContactAddressesOpenOutside) {
  site.serve("/signin",
             page("<body style='height: 540px'><script>const all = ["
                  "'javascript:fetch(`/script`)', 'data:text/plain,x', 'file:///etc/hostname', "
                  "'FILE:///etc/hostname', 'custom:x', 'about:blank', '', 'blob:x', 'view-source:http://host/',"
                  "'mailto:me@host', 'tel:112', 'HTTPS://host/a', 'http://host/b']; let next = 0;"
                  "onclick = () => { open(all[next]); fetch('/opened?' + ++next) };"
                  "onload = () => fetch('/loaded')</script>"));
  start();
  untilRequested("/loaded");
  for (int i = 1; i <= 13; ++i) {
    click();
    untilRequested("/opened?" + std::to_string(i));
  }
  untilOpened(4);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(browser.opened(),
              testing::UnorderedElementsAre("mailto:me@host", "tel:112", "https://host/a", "http://host/b"));
  EXPECT_FALSE(site.wasRequested("GET /script"));
}

}  // namespace
}  // namespace endtoend
