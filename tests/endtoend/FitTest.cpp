// A page that is taller than its area is shown smaller, so that all of it can be reached.
//
// If SVO_PICTURES names a folder, each test saves a picture of its window there.

#include <algorithm>
#include <cstdlib>
#include <optional>
#include <string>
#include <vector>

#include "tests/endtoend/PageTest.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;

constexpr unsigned kEndColor = 0xc01060;

// Reports the width of the page in each frame in which it is another one: 680 divided by the zoom. The block `#end` is
// at the end of a page.
constexpr char kBeginning[] = R"(<!doctype html><style>
  html { background: #204060 }
  body { margin: 0; font: 16px sans-serif; color: white }
  #end { height: 20px; background: #c01060 }
</style><script>
  const report = (what) => fetch('/report?what=' + encodeURIComponent(what));
  const resizeTo = (height) => { document.getElementById('block').style.height = height + 'px' };
  let width = 0;
  const watch = () => {
    if (innerWidth !== width) report('width ' + (width = innerWidth));
    requestAnimationFrame(watch);
  };
  watch();
  addEventListener('load', () => report('loaded'));
</script>)";

std::string words(int count) {
  std::string text;
  for (int i = 0; i < count; ++i)
    text += "words ";
  return text;
}

// A page of this height with a button at its end, which reports a click.
std::string pageOfHeight(int height) {
  return "<div id='block' style='height: " + std::to_string(height - 20) +
         "px'></div><div id='end' onclick='report(`end`)'></div>";
}

class FitTest : public PageTest {
 protected:
  ~FitTest() override {
    const char* const folder = std::getenv("SVO_PICTURES");
    if (folder == nullptr || !run || run->ended()) return;
    std::string name = testing::UnitTest::GetInstance()->current_test_info()->name();
    std::replace(name.begin(), name.end(), '/', '-');
    picture().savePng(std::string(folder) + "/Fit" + name + ".png");
  }

  void show(const std::string& body) {
    site.serve("/signin", page(kBeginning + body));
    start();
    screen.focus(window().id);
    untilReported("loaded");
  }

  void untilWidth(int width) { untilReported("width " + std::to_string(width)); }

  std::vector<std::string> widths() const {
    std::vector<std::string> found;
    for (const std::string& each : reports())
      if (each.rfind("width ", 0) == 0) found.push_back(each.substr(6));
    return found;
  }

  long reportsOf(const std::string& text) const {
    const std::vector<std::string> all = reports();
    return std::count(all.begin(), all.end(), text);
  }
};

TEST_F(FitTest, ATallPageIsShownWhole) {
  show(pageOfHeight(900));
  untilWidth(1114);  // 61 %
  until("the end of the page", [&] {
    const std::optional<Area> end = picture().find(kEndColor);
    return end && end->height < 20 && end->y + end->height <= kStripHeight + 550;
  });
  clickAt(340, 550 - 8);
  untilReported("end");
}

// A busy page makes a search last longer than the 100 ms after which the page is looked at again.
TEST_F(FitTest, ChangesDuringASearchDoNotSpoilIt) {
  show(pageOfHeight(900) + R"(<script>
    let frames = 0, last = 0;
    const count = () => {
      for (const end = performance.now() + 50; performance.now() < end;);
      document.body.dataset.changes = ++frames;
      if (innerWidth !== last) frames = 0;
      last = innerWidth;
      if (last === 680 || frames < 10) return requestAnimationFrame(count);
      const loads = sessionStorage.loads = Number(sessionStorage.loads ?? 0) + 1;
      report('settled at ' + last).then(() => loads < 5 ? location.reload() : report('finished'));
    };
    count();
  </script>)");
  untilReported("finished");
  EXPECT_EQ(reportsOf("settled at 1114"), 5);
}

TEST_F(FitTest, TextKeepsTheLargestSizeThatFits) {
  show("<p style='margin: 0'>" + words(700));
  until("the size", [&] { return widths().size() == 2; });
  EXPECT_LT(std::stoi(widths().back()), 1000);
  EXPECT_EQ(widths().front(), "680");
}

TEST_F(FitTest, ABodyThatScrollsIsFittedToo) {
  show("<style>html, body { height: 100% } body { overflow: auto }</style>" + pageOfHeight(900));
  untilWidth(1114);
}

TEST_F(FitTest, APageBecomesSmallerAndLargerAgain) {
  show(pageOfHeight(300) + "<script>onkeydown = (event) => resizeTo({ a: 880, b: 680, c: 300 }[event.key])</script>");
  screen.press(XK_a);
  untilWidth(1114);
  screen.press(XK_b);
  untilWidth(871);
  screen.press(XK_c);
  until("the full size", [&] { return widths().back() == "680"; });
}

// Grows in the middle of a layout of a fixed height, and by an image.
TEST_F(FitTest, LaterContentsAreFittedToo) {
  site.serve("/image.svg", tools::Response{200,
                                           "<svg xmlns='http://www.w3.org/2000/svg' width='300' height='900'/>",
                                           {{"Content-Type", "image/svg+xml"}}});
  show(
      "<style>html, body, main { height: 100% }</style><main></main><script>onkeydown = () => "
      "document.querySelector('main').innerHTML = '<img src=/image.svg style=\"display: block\">'</script>");
  screen.press(XK_a);
  untilWidth(1114);
}

class AreaHighTest : public FitTest, public testing::WithParamInterface<Named> {};

// The zoom of the user begins at 100 %: otherwise the page would not get this width.
TEST_P(AreaHighTest, StaysAtFullSize) {
  show(GetParam().script);
  screen.press(XK_plus, {XK_Control_L});
  untilWidth(618);
  EXPECT_THAT(widths(), ElementsAre("680", "618"));
}

INSTANTIATE_TEST_SUITE_P(Pages, AreaHighTest,
                         testing::Values(Named{"Exactly", "<style>body { height: 100vh }</style>words"},
                                         Named{"Box", "<div style='height: 100vh'></div>"},
                                         Named{"Fixed", "<div style='height: 550px'></div>"},
                                         Named{"Margins",
                                               "<style>body { margin: 8px; min-height: 100vh }</style>words"},
                                         Named{"Header",
                                               "<header style='height: 60px'>words</header>"
                                               "<main style='min-height: 100vh'><p>words</p></main>"}),
                         nameOf);

TEST_F(FitTest, APageThatChangesForeverSettles) {
  show(pageOfHeight(700) +
       "<script>let count = 0; setInterval(() => { resizeTo(count++ % 2 ? 580 : 980); "
       "if (count === 100) report('changed') }, 30)</script>");
  untilReported("changed");
  until("a size for its largest height", [&] { return std::stoi(widths().back()) >= 1236; });
  EXPECT_LE(widths().size(), 30u);
}

TEST_F(FitTest, APageThatFollowsItsZoomSettles) {
  show(pageOfHeight(700) + "<script>(onresize = () => resizeTo(1.2 * innerHeight))()</script>");
  until("the smallest size", [&] { return !widths().empty() && widths().back() == "1360"; });
  EXPECT_LE(widths().size(), 30u);
}

TEST_F(FitTest, AFieldKeepsFocusAndText) {
  show(
      "<div id='block' style='height: 860px'></div><form action='/done'><input name='a' autofocus"
      " onfocus='report(`focus`)' oninput='resizeTo(1000)'><input type='hidden' name='top'></form>"
      "<script>onsubmit = () => document.querySelector('[name=top]').value = scrollY</script>");
  untilReported("focus");
  screen.type("mi");
  untilWidth(1283);
  screen.type("ne");
  screen.press(XK_Return);
  EXPECT_EQ(message(), result(site.address("/done?a=mine&amp;top=0")));
}

TEST_F(FitTest, ZoomingInMakesItScrollUntilControl0) {
  show(pageOfHeight(1500) + "<script>onscroll = () => report(scrollY ? 'scrolled' : 'top')</script>");
  untilWidth(1360);
  const Area frame = window().frame;
  screen.moveTo(frame.x + 300, frame.y + 300);
  screen.turnWheel(3);
  screen.press(XK_plus, {XK_Control_L});
  untilWidth(1236);
  EXPECT_THAT(reports(), Not(Contains("scrolled")));
  screen.turnWheel(3);
  untilReported("scrolled");
  screen.press(XK_0, {XK_Control_L});
  untilReported("top");
  until("the smallest size", [&] { return widths().back() == "1360"; });
}

// Each page begins at 100 %, unless the user has chosen a larger zoom.
TEST_F(FitTest, OnlyAnEnlargedZoomOutlivesThePage) {
  site.serve("/next", page(std::string(kBeginning) + "<script>onclick = () => { location = '/last' }</script>next"));
  site.serve("/last", page(std::string(kBeginning) + "last"));
  show(pageOfHeight(900) + "<script>onclick = () => { location = '/next' }</script>");
  untilWidth(1114);
  screen.press(XK_plus, {XK_Control_L});
  untilWidth(1013);
  click();
  until("the next page", [&] { return reportsOf("loaded") == 2 && widths().back() == "680"; });
  screen.press(XK_plus, {XK_Control_L});
  untilWidth(618);
  click();
  until("the last page", [&] { return reportsOf("loaded") == 3; });
  EXPECT_EQ(widths().back(), "618");
}

TEST_F(FitTest, TheEnterpriseWindowFitsWhileItIsResized) {
  site.serve("/signin", redirectTo(site.address("/start?redirect_uri=" + site.address("/staff"))));
  site.serve("/staff", page(kBeginning + pageOfHeight(900)));
  start();
  untilWidth(1212);  // 66 % of a page of 800
  const Area frame = window().frame;
  screen.place(window().id, {frame.x, 10, 800, 740});
  untilWidth(1000);  // 80 %
  screen.place(window().id, {frame.x, 10, 900, 740});
  untilWidth(1125);
}

// What measures the page is in a world of its own.
TEST_F(FitTest, APageCannotReachItsMeasurement) {
  show(
      "<script>ResizeObserver = MutationObserver = Element.prototype.getBoundingClientRect = undefined; "
      "report(typeof heightAt + ' ' + typeof window.webkit?.messageHandlers?.changed)</script>" +
      pageOfHeight(900));
  untilReported("undefined undefined");
  untilWidth(1114);
}

}  // namespace
}  // namespace endtoend
