// Use of the window by keyboard only.

#include "tests/endtoend/EndToEndTest.h"

#include <string>

namespace endtoend {
namespace {

using testing::ElementsAre;

class KeyboardTest : public EndToEndTest {
 protected:
  // Starts with a page in the window, which has the keyboard focus.
  void startOn(const std::string& body) {
    site.serve("/signin", pageThatReportsItsLoad(body));
    start();
    screen.focus(window().id);
    untilRequested("/loaded");
  }

  // Also waits until the first field has the focus, which the page sets some time after it has loaded.
  void startOnFields(const std::string& body) {
    startOn(body);
    untilRequested("/focused");
  }

  std::string done(const std::string& query) { return result(site.address("/done?" + query)); }
};

// The first field has the focus. Return posts both fields.
constexpr char kTwoFields[] =
    "<form action='/done'><input name='a' autofocus onfocus='fetch(`/focused`)'><input "
    "name='b'><button></button></form>";

// Text that is not editable, and a script that reports changes to it.
constexpr char kWords[] = R"(<p>words</p><script>
  onselectionchange = document.onselectionchange = () => {
    if (getSelection().toString().trim() === 'words') fetch('/selected');
  };
  document.oncopy = () => setTimeout(() => { location.href = '/done?copied=' + getSelection().toString().trim() });
  document.onpaste = (event) => { location.href = '/done?pasted=' + event.clipboardData.getData('text') };
</script>)";

TEST_F(KeyboardTest, ThePageHasTheFocusAtOnce) {
  startOnFields(kTwoFields);
  screen.type("me");
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=me&amp;b="));
}

TEST_F(KeyboardTest, SelectsCutsAndPastesInFields) {
  startOnFields(kTwoFields);
  screen.type("mine");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_x, {XK_Control_L});
  screen.press(XK_Tab);
  screen.press(XK_v, {XK_Control_L});
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=&amp;b=mine"));
}

TEST_F(KeyboardTest, CopiesFromOneFieldToTheNext) {
  startOnFields(kTwoFields);
  screen.type("mine");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_c, {XK_Control_L});
  screen.press(XK_Tab);
  screen.press(XK_v, {XK_Control_L});
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=mine&amp;b=mine"));
}

TEST_F(KeyboardTest, UndoesInAField) {
  startOnFields(kTwoFields);
  screen.type("mine");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_x, {XK_Control_L});
  screen.press(XK_z, {XK_Control_L});
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=mine&amp;b="));
}

TEST_F(KeyboardTest, SelectsAndCopiesAPageWithoutAField) {
  startOn(kWords);
  screen.press(XK_a, {XK_Control_L});
  untilRequested("/selected");
  screen.press(XK_c, {XK_Control_L});
  EXPECT_EQ(message(), done("copied=words"));
}

TEST_F(KeyboardTest, PastesIntoAPageWithoutAField) {
  startOnFields(std::string(kTwoFields) + kWords);
  screen.type("mine");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_x, {XK_Control_L});
  screen.press(XK_Tab);
  screen.press(XK_Tab);
  screen.press(XK_v, {XK_Control_L});
  EXPECT_EQ(message(), done("pasted=mine"));
}

TEST_F(KeyboardTest, UndoDoesNothingWithoutAField) {
  startOn(kWords);
  for (const char letter : std::string("zkxntospurljdq"))
    screen.press(static_cast<KeySymbol>(letter), {XK_Control_L});
  screen.press(XK_a, {XK_Control_L});
  untilRequested("/selected");
  EXPECT_THAT(site.requestLines(), ElementsAre("GET /signin", "GET /loaded", "GET /selected"));
  EXPECT_EQ(screen.windows().size(), 1u);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyboardTest, ShiftMakesNoShortcut) {
  startOn(std::string(kWords) +
          "<script>onkeydown = (event) => { if (event.key === 'Enter') "
          "location.href = '/done?selected=' + getSelection() }</script>");
  screen.press(XK_a, {XK_Control_L, XK_Shift_L});
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("selected="));
}

// Tests undo: WebKit has key bindings of its own for the other shortcuts, with and without Caps Lock.
TEST_F(KeyboardTest, CapsLockMakesNoShortcut) {
  startOnFields(kTwoFields);
  screen.type("mine");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_x, {XK_Control_L});
  screen.press(XK_Caps_Lock);
  screen.press(XK_z, {XK_Control_L});
  screen.press(XK_Tab);
  screen.press(XK_y);
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=&amp;b=Y"));
}

TEST_F(KeyboardTest, KeysThatThePageUsesMakeNoShortcut) {
  startOn(std::string(kWords) +
          "<script>onkeydown = (event) => { event.preventDefault(); if (event.key === 'Enter') "
          "location.href = '/done?selected=' + getSelection() }</script>");
  screen.press(XK_a, {XK_Control_L});
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("selected="));
}

TEST_F(KeyboardTest, TabReachesEverythingAndReturns) {
  site.serve("/signin",
             page(R"(<input id='a' autofocus><select id='b'></select><a id='c' href='#'>c</a><button id='d'>d</button>
<iframe srcdoc="<input onfocus='parent.went(`e`)'>"></iframe>
<script>
  let way = '';
  function went(id) {
    way += id;
    fetch('/way?' + way);
  }
  addEventListener('focusin', (event) => { if (event.target.id) went(event.target.id) });
</script>)"));
  start();
  screen.focus(window().id);
  untilRequested("/way?a");
  for (const char* const way : {"ab", "abc", "abcd", "abcde"}) {
    screen.press(XK_Tab);
    untilRequested(std::string("/way?") + way);
  }
  screen.press(XK_Tab);  // to the page as a whole
  screen.press(XK_Tab);
  untilRequested("/way?abcdea");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyboardTest, EscapeDoesNotStopALoad) {
  site.hold("/signin");
  site.serve("/signin", redirectTo(site.address("/done")));
  start();
  untilRequested("/signin");
  screen.focus(window().id);
  screen.press(XK_Escape);
  site.release("/signin");
  EXPECT_EQ(message(), result(site.address("/done")));
}

TEST_F(KeyboardTest, EscapeKeepsTypedText) {
  startOnFields(kTwoFields);
  screen.type("mine");
  screen.press(XK_Escape);
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=mine&amp;b="));
}

TEST_F(KeyboardTest, AnInputMethodWritesIntoAField) {
  options.environment["GTK_IM_MODULE"] = "gtk-im-context-simple";
  startOnFields(std::string(kTwoFields) + "<style>input { font: 40px monospace; color: #a01010 }</style>");

  // After painting, the input method has received the events before it.
  screen.type("x");
  until("the letter", [&] { return screen.picture(window().frame).find(0xa01010, 20).has_value(); });
  screen.press(XK_u, {XK_Control_L, XK_Shift_L});
  screen.type("e9");
  screen.press(XK_Return);
  screen.press(XK_Return);
  EXPECT_EQ(message(), done("a=x%C3%A9&amp;b="));
}

TEST_F(KeyboardTest, ControlWCloses) {
  startOnFields(kTwoFields);
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(KeyboardTest, AltF4Closes) {
  startOnFields(kTwoFields);
  screen.press(XK_F4, {XK_Alt_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(KeyboardTest, NoPageCanKeepTheWindowOpen) {
  startOn("<script>onkeydown = (event) => event.preventDefault()</script>");
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(KeyboardTest, ControlWClosesTheSpinnerPage) {
  site.hold("/signin");
  start();
  untilRequested("/signin");
  screen.focus(window().id);
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

// Reports the page's width in CSS pixels each time it changes. A click leaves the page.
constexpr char kMeasuredPage[] = "<script>onresize = () => fetch('/width?' + innerWidth)</script>";

TEST_F(KeyboardTest, ControlPlusMinusAndZeroZoom) {
  startOn(kMeasuredPage);
  screen.press(XK_plus, {XK_Control_L});
  untilRequested("/width?618");
  screen.press(XK_0, {XK_Control_L});
  untilRequested("/width?680");
  screen.press(XK_minus, {XK_Control_L});
  untilRequested("/width?748");
  screen.press(XK_equal, {XK_Control_L});
  screen.press(XK_KP_Add, {XK_Control_L});
  until("the second 618",
        [&] { return testing::Matches(testing::Contains("GET /width?618").Times(2))(site.requestLines()); });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyboardTest, ZoomHasLimits) {
  startOn(kMeasuredPage);
  for (int i = 0; i < 15; ++i)
    screen.press(XK_plus, {XK_Control_L});
  untilRequested("/width?226");
  for (int i = 0; i < 25; ++i)
    screen.press(XK_minus, {XK_Control_L});
  untilRequested("/width?1360");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(KeyboardTest, AZoomedPageMayBeScrolled) {
  startOn(
      "<body style='height: 3000px'><script>onresize = () => fetch('/width?' + innerWidth); "
      "onscroll = () => { location.href = '/done?scrolled' }</script>");
  untilRequested("/width?1360");  // the page is shown at half its size
  screen.press(XK_plus, {XK_Control_L});
  untilRequested("/width?1236");
  const Area frame = window().frame;
  screen.moveTo(frame.x + 300, frame.y + 300);
  screen.turnWheel(3);
  EXPECT_EQ(message(), done("scrolled"));
}

}  // namespace
}  // namespace endtoend
