// The tools that read the screen and simulate input, on the real window.

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

constexpr char kPageThatSendsWhatIsTyped[] = R"html(
<input autofocus onfocus="fetch('/focused')"
       onkeydown="if (event.key == 'Enter') location.href = '/done?text=' + encodeURIComponent(value)">)html";

class ScreenTest : public EndToEndTest {
 protected:
  using EndToEndTest::EndToEndTest;

  void startWithAField() {
    site.serve("/signin", page(kPageThatSendsWhatIsTyped));
    start();
    untilRequested("/focused");
  }
};

TEST_F(ScreenTest, TheFocusedWindowGetsTheKeys) {
  startWithAField();
  screen.moveTo(0, 0);
  screen.focus(window().id);
  screen.type("Ab1");
  screen.press(XK_Return);
  EXPECT_EQ(message(), result(site.address("/done?text=Ab1")));
}

TEST_F(ScreenTest, MissingKeysAreAdded) {
  startWithAField();
  screen.focus(window().id);
  screen.press(XK_Cyrillic_ef);
  screen.press(XK_Greek_lambda);
  screen.press(XK_Cyrillic_ef);
  screen.press(XK_Return);
  EXPECT_EQ(message(), result(site.address("/done?text=%D1%84%CE%BB%D1%84")));
}

TEST_F(ScreenTest, PropertiesAreReadLikeOtherPrograms) {
  start();
  untilRequested("/signin");
  const ScreenWindow shown = window();
  EXPECT_EQ(screen.textOf(shown.id, "_NET_WM_NAME"), "Example Product");
  EXPECT_THAT(screen.numbersOf(shown.id, "_NET_WM_PID"), testing::ElementsAre(shown.pid));
  EXPECT_THAT(screen.numbersOf(shown.id, "NO_SUCH_PROPERTY"), testing::IsEmpty());
}

class LargeScreenTest : public ScreenTest {
 protected:
  LargeScreenTest() : ScreenTest({2560, 2048}) {}
};

TEST_F(LargeScreenTest, AWindowOfDoubleSizeFits) {
  options.environment["GDK_SCALE"] = "2";
  start();
  until("its size", [&] { return window().frame.width == 2 * 680 && window().frame.height == 2 * 570; });
  EXPECT_EQ(window().frame.x, (2560 - 2 * 680) / 2);
}

}  // namespace
}  // namespace endtoend
