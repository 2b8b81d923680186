// A page writes the clipboard only when the user copies, and never the primary selection.

#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {
namespace {

class ClipboardTest : public PageTest, public testing::WithParamInterface<Named> {
 protected:
  void expectNothingIsWritten() {
    EXPECT_EQ(screen.ownerOf("CLIPBOARD"), 0u);
    EXPECT_EQ(screen.ownerOf("PRIMARY"), 0u);
    EXPECT_EQ(messageAfterClosing(), kWindowClosed);
  }
};

constexpr char kText[] = "<body style='height: 550px'><p>words</p><textarea>more words</textarea>";

TEST_P(ClipboardTest, IsNotWrittenOnAClick) {
  startOn(kText + std::string("<script>onclick = async () => { try { ") + GetParam().script +
          " } catch {} await frames(3); report('done') }</script>");
  click();
  untilReported("done");
  expectNothingIsWritten();
}

TEST_P(ClipboardTest, IsNotWrittenWithoutInput) {
  startOn(kText + std::string("<script>onload = async () => { try { ") + GetParam().script +
          " } catch {} await frames(3); report('done') }</script>");
  untilReported("done");
  expectNothingIsWritten();
}

INSTANTIATE_TEST_SUITE_P(
    By, ClipboardTest,
    testing::Values(Named{"Selecting", "getSelection().selectAllChildren(document.body)"},
                    Named{"SelectingInAField", "document.querySelector('textarea').select()"},
                    Named{"ACommand", "getSelection().selectAllChildren(document.body); document.execCommand('copy')"},
                    Named{"ACopyHandler",
                          "oncopy = (event) => { event.clipboardData.setData('text/plain', 'x'); "
                          "event.preventDefault() }; document.execCommand('copy')"},
                    Named{"TheClipboardApi", "await navigator.clipboard.writeText('rm -r ~')"}),
    nameOf);

TEST_F(ClipboardTest, SelectingWithTheMouseKeepsThePrimarySelection) {
  startOn(
      "<p style='font: 40px monospace'>words</p><script>document.onselectionchange = async () => {"
      "if (!getSelection().toString()) return; await frames(3); report('selected') }</script>");
  const Area frame = window().frame;
  screen.doubleClick(frame.x + 40, frame.y + 80);
  untilReported("selected");
  EXPECT_EQ(screen.ownerOf("PRIMARY"), 0u);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The page writes a second time when the user's copy is done.
TEST_F(ClipboardTest, ACopyPermitsOneWrite) {
  startOn(
      "<textarea autofocus style='font: 40px monospace'>mine</textarea><textarea id='other'></textarea>"
      "<script>const it = document.querySelector('textarea'), other = document.querySelector('#other');"
      "it.select();"
      "it.oncopy = () => setTimeout(async () => {"
      "  it.value = 'theirs'; it.select(); document.execCommand('copy'); other.focus(); report('copied') });"
      "other.onpaste = (event) => report('pasted ' + event.clipboardData.getData('text'))</script>");
  screen.press(XK_c, {XK_Control_L});
  untilReported("copied");
  EXPECT_EQ(screen.ownerOf("PRIMARY"), 0u);
  screen.press(XK_v, {XK_Control_L});
  untilReported("pasted mine");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(ClipboardTest, TheMenuCopies) {
  startOn(
      "<textarea autofocus style='position: fixed; inset: 0; width: 400px; height: 400px'>mine</textarea>"
      "<script>const it = document.querySelector('textarea'); it.select();"
      "it.oncopy = () => setTimeout(() => report('copied'));"
      "it.onpaste = (event) => report('pasted ' + event.clipboardData.getData('text'))</script>");
  untilPainted();
  clickRightAt(30, 10);
  until("the menu", [&] { return screen.windows().size() > 1; });
  screen.press(XK_Down);
  screen.press(XK_Down);
  screen.press(XK_Return);
  untilReported("copied");
  screen.press(XK_v, {XK_Control_L});
  untilReported("pasted mine");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
