// From the commit of another site's page until it has painted, the page before is neither shown nor named, and what the
// user types gets lost.

#include <string>
#include <vector>

#include "tests/endtoend/PageTest.h"
#include "tests/endtoend/Proxy.h"
#include "tests/endtoend/RawServer.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::Not;

class CoverTest : public PageTest {
 protected:
  CoverTest() { options.environment.merge(proxy_.environment()); }

  // Starts on a page of one site in kPageColor, which a click leaves for `address`. Waits until the strip names the
  // site of that address.
  void leaveFor(const std::string& address) {
    options.signIn = "http://shop.example/signin";
    startOn("<body style='height: 550px'><script>onclick = () => { location.href = '" + address + "' }</script>");
    untilPainted();
    const unsigned before = stripPixels();
    click();
    until("the other site's name", [&] { return stripPixels() != before; });
  }

  bool showsThePageBefore() { return picture().find(kPageColor, 1).has_value(); }

  Proxy proxy_{site};

 private:
  // A sum of the part of the strip that names the site, without the progress line.
  unsigned stripPixels() {
    const Picture all = picture();
    unsigned sum = 0;
    for (int y = 0; y < kStripHeight - 2; ++y) {
      for (int x = 0; x < all.width(); ++x)
        sum = 31 * sum + all.colorAt(x, y);
    }
    return sum;
  }
};

constexpr char kOtherAddress[] = "http://bank.example/other";
constexpr char kReportKeys[] = "<script>onkeydown = (event) => report('key ' + event.key)</script>";
constexpr unsigned kOtherColor = 0x802010;
constexpr char kOtherStyle[] = "<style>html { background: #802010 !important }</style>";

TEST_F(CoverTest, HidesThePageBeforeUntilTheNextPaints) {
  site.serve("/other",
             pageWith(std::string(kOtherStyle) + kReportKeys + "<link rel='stylesheet' href='/style'><p>words"));
  site.serve("/style", tools::Response{200, "p { color: red }", {{"Content-Type", "text/css"}}});
  site.hold("/style");
  leaveFor(kOtherAddress);
  untilRequested("/style");
  EXPECT_FALSE(showsThePageBefore());
  screen.press(XK_x);
  EXPECT_FALSE(showsThePageBefore());

  site.release("/style");
  bool flashed = false;
  until("the other page", [&] {
    flashed = flashed || showsThePageBefore();
    return picture().find(kOtherColor).has_value();
  });
  EXPECT_FALSE(flashed);
  screen.press(XK_y);
  untilReported("key y");
  EXPECT_THAT(reports(), Not(Contains("key x")));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(CoverTest, StaysOnAPageThatNeverPaints) {
  site.serve("/other", pageWith("<script>report('busy'); for (const end = Date.now() + 500; Date.now() < end;);"
                                "for (;;);</script>"));
  leaveFor(kOtherAddress);
  untilReported("busy");
  EXPECT_FALSE(showsThePageBefore());
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(CoverTest, EndsForAPageWithoutScripts) {
  site.serve("/other", tools::Response{
                           200, kOtherStyle, {{"Content-Type", "text/html"}, {"Content-Security-Policy", "sandbox"}}});
  leaveFor(kOtherAddress);
  until("the other page", [&] { return picture().find(kOtherColor).has_value(); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class IncompletePageTest : public PageTest {};

TEST_F(IncompletePageTest, IsCoveredWithoutInput) {
  const std::string padding(2000, ' ');  // the first kilobyte waits for more
  const RawServer slow(
      "HTTP/1.1 200 OK\r\nContent-Type: text/html; charset=utf-8\r\nContent-Length: 99999\r\n\r\n<script>"
      "const tell = (what) => fetch('" +
          site.address("/") +
          "' + what, { mode: 'no-cors' }); onkeydown = () => tell('typed'); tell('begun')</script>" + padding,
      false);
  startOn("<body style='height: 550px'><script>onclick = () => { location.href = '" + slow.address() + "' }</script>");
  untilPainted();
  click();
  untilRequested("/begun");
  until("the cover", [&] { return !picture().find(kPageColor, 1).has_value(); });
  screen.press(XK_x);
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
  EXPECT_FALSE(site.wasRequested("GET /typed"));
}

class DocumentTest : public CoverTest, public testing::WithParamInterface<Named> {};

TEST_P(DocumentTest, IsShown) {
  const std::string type = GetParam().name;
  const std::string mime = type == "Svg" ? "image/svg+xml" : type == "Xml" ? "application/xhtml+xml" : "text/html";
  site.serve("/other", tools::Response{200, GetParam().script, {{"Content-Type", mime}}});
  leaveFor(kOtherAddress);
  until("the other page", [&] { return picture().find(kOtherColor).has_value(); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Of, DocumentTest,
    testing::Values(
        Named{"Svg", "<svg xmlns='http://www.w3.org/2000/svg'><rect width='400' height='400' fill='#802010'/></svg>"},
        Named{"Xml", "<html xmlns='http://www.w3.org/1999/xhtml'><body style='background: #802010'/></html>"},
        Named{"Rewritten",
              "<script>document.open(); document.write('<body style=\"background: #802010\">');"
              "document.close()</script>"},
        Named{"Replaced",
              "<script>onload = () => { const it = document.createElement('p');"
              "it.style = 'position: fixed; inset: 0; background: #802010';"
              "document.documentElement.replaceWith(it) }</script>"}),
    nameOf);

class EmptyPageTest : public CoverTest, public testing::WithParamInterface<Named> {};

// The page gets the focus when the cover is removed.
TEST_P(EmptyPageTest, ReplacesThePageBefore) {
  site.serve("/other", page("<script>onfocus = () => fetch('/focused')</script>" + std::string(GetParam().script)));
  leaveFor(kOtherAddress);
  untilRequested("/focused");
  EXPECT_FALSE(showsThePageBefore());
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Of, EmptyPageTest,
    testing::Values(Named{"NoContent", ""}, Named{"HiddenContent", "<style>html { display: none }</style>words"},
                    Named{"TransparentContent",
                          "<style>html, body { background: transparent; opacity: 0 }</style>words"},
                    Named{"NoFrames", "<script>requestAnimationFrame = () => 0</script>"},
                    Named{"ABusyScript",
                          "words<script>requestAnimationFrame(() => {"
                          "for (const end = Date.now() + 500; Date.now() < end;); })</script>"},
                    Named{"ALayer", "<p style='will-change: transform; transform: rotate3d(1, 1, 1, 9deg)'>words"}),
    nameOf);

}  // namespace
}  // namespace endtoend
