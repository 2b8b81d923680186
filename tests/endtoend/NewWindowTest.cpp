// Requests for a new window: they leave for the default browser, and the sign-in stays where it is.

#include <fstream>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

using testing::ElementsAre;

class NewWindowTest : public EndToEndTest {
 protected:
  NewWindowTest() : watched_(temporary("browser")) {
    std::filesystem::create_directories(temporary("data/applications"));
    std::ofstream(script()) << "#!/bin/sh\nprintf '%s\\n' \"$1\" >>'" << opened().string() << "'\n";
    std::filesystem::permissions(script(), std::filesystem::perms::owner_all);
    std::ofstream(temporary("data/applications/test-browser.desktop"))
        << "[Desktop Entry]\nType=Application\nName=Test browser\nExec=" << script().string()
        << " %u\nMimeType=x-scheme-handler/http;x-scheme-handler/https;x-scheme-handler/mailto;\n";
    std::ofstream(temporary("data/applications/mimeapps.list"))
        << "[Default Applications]\nx-scheme-handler/http=test-browser.desktop\n"
        << "x-scheme-handler/mailto=test-browser.desktop\n";
    options.environment["XDG_DATA_DIRS"] = temporary("data").string() + ":/usr/local/share:/usr/share";
  }

  // What the browser was asked to open, in order.
  std::vector<std::string> openedAddresses() const {
    std::ifstream file(opened());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
      lines.push_back(line);
    return lines;
  }

  void untilOpened(std::size_t count) {
    until("the browser", [&] { return openedAddresses().size() >= count; });
  }

 private:
  std::filesystem::path script() const { return temporary("test-browser"); }
  std::filesystem::path opened() const { return temporary("browser") / "opened"; }

  WatchedFolder watched_;
};

TEST_F(NewWindowTest, ALinkWithATargetOpensInTheBrowser) {
  site.serve("/signin", pageThatTells("<a href='/help' target='_blank' style='position:fixed;inset:0'>help</a>"));
  start();
  untilAsked("/loaded");
  click();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(openedAddresses(), ElementsAre(site.address("/help")));
  EXPECT_THAT(site.asked(), ElementsAre("GET /signin", "GET /loaded"));
}

TEST_F(NewWindowTest, AScriptThatOpensAWindowOpensItInTheBrowser) {
  site.serve("/signin", page("<script>onload = () => window.open('/popup')</script>"));
  start();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(openedAddresses(), ElementsAre(site.address("/popup")));
  EXPECT_THAT(site.asked(), ElementsAre("GET /signin"));
}

TEST_F(NewWindowTest, AMailAddressOpensOutsideAndThePageStays) {
  site.serve("/signin", pageThatTells("<a href='mailto:help@host' style='position:fixed;inset:0'>help</a>"));
  start();
  untilAsked("/loaded");
  click();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(openedAddresses(), ElementsAre("mailto:help@host"));
}

TEST_F(NewWindowTest, EachRequestIsHandedOverOnce) {
  site.serve("/signin", pageThatTells("<a href='/help' target='_blank' style='position:fixed;inset:0'>help</a>"
                                      "<script>document.querySelector('a').onclick = () => "
                                      "setTimeout(() => window.open('/popup'), 0)</script>"));
  start();
  untilAsked("/loaded");
  click();
  untilOpened(2);
  click();
  untilOpened(4);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  EXPECT_THAT(openedAddresses(), testing::UnorderedElementsAre(site.address("/help"), site.address("/popup"),
                                                               site.address("/help"), site.address("/popup")));
}

TEST_F(NewWindowTest, TheRedirectAddressInANewWindowEndsNothing) {
  site.serve("/signin", page("<script>onload = () => window.open('/done?code=1')</script>"));
  start();
  untilOpened(1);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
