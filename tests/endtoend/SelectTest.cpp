// The lists of select fields: opened only by the user, inside the page's area, and never in the way of closing.

#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {
namespace {

using testing::SizeIs;

class SelectTest : public PageTest {
 protected:
  // A field with three options, which reports the chosen one.
  static constexpr char kSelect[] =
      "<style>select { position: fixed; left: 20px; top: 60px; width: 200px; height: 40px }</style>"
      "<select onchange='report(value)'><option>alpha<option>beta<option>gamma</select>"
      "<script>const field = document.querySelector('select')</script>";

  // Opens the list every tenth of a second, and reports "tried" after ten times.
  static constexpr char kOpenForEver[] =
      "let tries = 0;"
      "const open = () => {"
      "  field.dispatchEvent(new MouseEvent('mousedown', { bubbles: true, button: 0 }));"
      "  try { field.showPicker() } catch {}"
      "  if (++tries === 10) frames(5).then(() => report('tried')) };"
      "setInterval(open, 100)";

  void startOnSelect(const std::string& script = "") {
    startOn(kSelect + ("<script>" + script + "</script>"));
    untilPainted();
  }

  bool listIsShown() { return picture().colorAt(120, kStripHeight + 104) != kPageColor; }
  void untilListIsShown() {
    until("the list", [this] { return listIsShown(); });
  }
  void untilListIsClosed() {
    until("the page without a list", [this] { return !listIsShown(); });
  }

  void openList() {
    clickAt(100, 80);
    untilListIsShown();
  }
};

TEST_F(SelectTest, AClickOpensTheListInTheWindow) {
  startOnSelect();
  openList();
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.press(XK_Escape);
  untilListIsClosed();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, AClickOnThePageClosesTheList) {
  startOnSelect("onmousedown = () => report('pressed')");
  openList();
  clickAt(400, 400);
  untilListIsClosed();
  clickAt(400, 400);
  untilReported("pressed");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, AClickChoosesAnOption) {
  startOnSelect();
  openList();
  const Picture all = picture();
  int bottom = kStripHeight + 104;
  while (all.colorAt(120, bottom) != kPageColor)
    ++bottom;
  clickAt(100, bottom - kStripHeight - 8);
  untilReported("gamma");
  untilListIsClosed();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, KeysOpenAndChoose) {
  startOnSelect("field.focus()");
  screen.press(XK_space);
  untilListIsShown();
  screen.press(XK_Down);
  screen.press(XK_Return);
  untilReported("beta");
  untilListIsClosed();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, LettersSelectAnOption) {
  startOnSelect();
  openList();
  screen.type("GA");
  screen.press(XK_Return);
  untilReported("gamma");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, AListOpensAboveALowField) {
  startOnSelect("field.style.top = '500px'");
  clickAt(100, 520);
  until("the list", [&] { return picture().colorAt(120, kStripHeight + 490) != kPageColor; });
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, ControlWClosesAWindowWithAList) {
  startOnSelect();
  openList();
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(SelectTest, TheButtonClosesAWindowWithAList) {
  startOnSelect();
  openList();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, NoScriptOpensAList) {
  startOnSelect(kOpenForEver);
  untilReported("tried");
  EXPECT_FALSE(listIsShown());
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(SelectTest, EndlessListsDoNotBlockTheCloseButton) {
  startOnSelect(kOpenForEver);
  untilReported("tried");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(SelectTest, AClickPermitsOneList) {
  startOnSelect(std::string("onkeydown = () => { ") + kOpenForEver + " }");
  openList();
  screen.press(XK_Escape);
  untilListIsClosed();
  screen.press(XK_g);
  untilReported("tried");
  EXPECT_FALSE(listIsShown());
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
