// The window: its content, its frame and how it is closed.

#include <signal.h>

#include <filesystem>
#include <string>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

constexpr unsigned kSpinnerBlue = 0x008bd9;

class WindowTest : public EndToEndTest {
 protected:
  Picture picture() { return screen.picture(window().frame); }

  void untilColorIsShown(unsigned color) {
    until("the color", [&] { return picture().find(color).has_value(); });
  }
};

TEST_F(WindowTest, TheSpinnerIsCentered) {
  site.hold("/signin");
  start();
  untilRequested("/signin");
  untilColorIsShown(kSpinnerBlue);
  const Area spinner = *picture().find(kSpinnerBlue);
  EXPECT_NEAR(spinner.x + spinner.width / 2, 680 / 2, 32);
  EXPECT_NEAR(spinner.y + spinner.height / 2, kStripHeight + 550 / 2, 32);
}

TEST_F(WindowTest, ItIs680By570WithTheProductName) {
  options.product = "My Product \xC3\xBC";
  site.hold("/signin");
  start();
  untilRequested("/signin");
  EXPECT_EQ(window().title, "My Product \xC3\xBC");
  EXPECT_EQ(window().frame.width, 680);
  EXPECT_EQ(window().frame.height, 570);
  EXPECT_TRUE(screen.sizeLimitsOf(window().id).fixed);
}

TEST_F(WindowTest, ItHasADefaultTitle) {
  options.product.reset();
  start();
  untilRequested("/signin");
  EXPECT_FALSE(window().title.empty());
}

TEST_F(WindowTest, ThePageFillsTheWindowBelowTheStrip) {
  site.serve("/signin", page("<style>body{background:#123456;margin:0}</style>"));
  start();
  untilColorIsShown(0x123456);
  const Area shown = *picture().find(0x123456);
  EXPECT_EQ(shown.y, kStripHeight);
  EXPECT_EQ(shown.height, 550);
  EXPECT_EQ(shown.width, 680);
}

// Thirty frames after a click the page reports its scroll position: smooth scrolling takes time.
constexpr char kLongPage[] = R"(
<style>body { background: #123456; margin: 0 } div { height: 4000px; width: 4000px }</style><div></div>
<script>
  const report = (frames) => frames ? requestAnimationFrame(() => report(frames - 1))
                                    : location.href = `/done?x=${scrollX}&y=${scrollY}`;
  onclick = () => report(30);
  onload = () => fetch('/loaded');
</script>)";

TEST_F(WindowTest, TheWheelDoesNotScrollALongPage) {
  site.serve("/signin", page(kLongPage));
  start();
  untilRequested("/loaded");
  untilColorIsShown(0x123456);
  const Area frame = window().frame;
  screen.moveTo(frame.x + frame.width - 3, frame.y + 300);
  screen.turnWheel(10);
  EXPECT_EQ(picture().find(0x123456, 680 * 550)->width, 680);
  click();
  EXPECT_EQ(message(), result(site.address("/done?x=0&amp;y=0")));
}

// The page reports each key: the last one is handled before the click.
TEST_F(WindowTest, KeysDoNotScrollALongPage) {
  site.serve("/signin",
             page(std::string(kLongPage) + "<script>onkeyup = (event) => fetch('/key?' + event.key)</script>"));
  start();
  untilRequested("/loaded");
  screen.focus(window().id);
  for (const KeySymbol key : std::initializer_list<KeySymbol>{XK_Down, XK_Right, XK_space, XK_Page_Down, XK_End})
    screen.press(key);
  untilRequested("/key?End");
  click();
  EXPECT_EQ(message(), result(site.address("/done?x=0&amp;y=0")));
}

TEST_F(WindowTest, ClosingTheSpinnerPageIsReported) {
  site.hold("/signin");
  start();
  untilRequested("/signin");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(WindowTest, ClosingTheSignInPageIsReported) {
  site.serve("/signin", pageThatReportsItsLoad());
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(WindowTest, ClosingTheEnterprisePageIsReported) {
  site.serve("/signin", redirectTo(site.address("/start?redirect_uri=" + site.address("/staff"))));
  site.serve("/staff", pageThatReportsItsLoad());
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(WindowTest, ABeforeUnloadDialogDoesNotBlockClosing) {
  site.serve("/signin", pageThatReportsItsLoad("<script>onbeforeunload = (event) => event.preventDefault()</script>"));
  start();
  untilRequested("/loaded");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class SignalTest : public WindowTest, public testing::WithParamInterface<int> {};

TEST_P(SignalTest, ATerminationSignalReportsAClosedWindow) {
  start();
  untilRequested("/signin");
  run->signal(GetParam());
  EXPECT_EQ(message(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Endings, SignalTest, testing::Values(SIGTERM, SIGINT, SIGHUP),
                         [](const auto& each) { return sigabbrev_np(each.param); });

class OddFolderTest : public WindowTest, public testing::WithParamInterface<const char*> {};

TEST_P(OddFolderTest, TheProgramStartsThere) {
  const std::filesystem::path folder = temporary(GetParam());
  std::filesystem::create_directory(folder);
  std::filesystem::copy(options.program, folder);
  options.program = folder / "svo-signin";
  site.serve("/signin", redirectTo(site.address("/done")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
}

INSTANTIATE_TEST_SUITE_P(Names, OddFolderTest,
                         testing::Values("two words", "#hash", "what?", "100%", "%20", "[square] {curly} (round)",
                                         "it's", "\"quoted\"", "gr\xC3\xBC\xC3\x9F\x65 \xE6\x97\xA5\xE6\x9C\xAC",
                                         "back\\slash", "Upper.Case", "a;b&c=d+e,f:g@h", "<tag>", "~"));

// The name is Latin-1, which a ctest name cannot contain.
TEST_F(WindowTest, ItStartsFromAFolderWithoutUtf8Name) {
  const std::filesystem::path folder = temporary("gr\xFC\xDF\x65");
  std::filesystem::create_directory(folder);
  std::filesystem::copy(options.program, folder);
  options.program = folder / "svo-signin";
  site.serve("/signin", redirectTo(site.address("/done")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done")));
}

}  // namespace
}  // namespace endtoend
