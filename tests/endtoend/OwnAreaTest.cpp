// A page cannot change anything outside its area: the strip, the title, the window's position, the mouse pointer.

#include "tests/endtoend/PromptTest.h"

#include <optional>
#include <string>
#include <vector>

namespace endtoend {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class OwnAreaTest : public PromptTest {
 protected:
  // Every color of the strip, row by row. They do not change after the page has loaded.
  std::vector<unsigned> strip() {
    const Picture all = picture();
    std::vector<unsigned> colors;
    for (int y = 0; y < kStripHeight; ++y) {
      for (int x = 0; x < all.width(); ++x)
        colors.push_back(all.colorAt(x, y));
    }
    return colors;
  }

  // Moves the pointer to where it covers nothing.
  void startOnAndRecordStrip(const std::string& body) {
    screen.moveTo(0, 0);
    startOn(body);
    untilPainted();
    until("the end of the load", [&] {
      const Picture all = picture();
      return all.colorAt(10, kStripHeight - 1) == all.colorAt(670, kStripHeight - 1);
    });
    before_ = strip();
  }

  bool isUnchangedStrip() { return strip() == before_; }
  void expectUnchangedStrip() { EXPECT_TRUE(isUnchangedStrip()); }

  // Presses the key that the page waits for, and waits for the page's report.
  void go() {
    screen.press(XK_g);
    untilReported("gone");
  }

 private:
  std::vector<unsigned> before_;
};

class BubbleTest : public OwnAreaTest, public testing::WithParamInterface<Named> {};

TEST_P(BubbleTest, StaysBelowTheStrip) {
  startOnAndRecordStrip(
      std::string("<form>") + GetParam().script +
      "</form><script>const field = document.querySelector('input'); field.setCustomValidity('wrong');"
      "onkeydown = () => field.reportValidity()</script>");
  const auto colored = [&](const Picture& all) {
    int count = 0;
    for (int y = kStripHeight; y < all.height(); ++y) {
      for (int x = 0; x < all.width(); ++x)
        count += all.colorAt(x, y) == kPageColor ? 1 : 0;
    }
    return count;
  };
  const int before = colored(picture());
  screen.press(XK_g);
  until("the bubble", [&] { return colored(picture()) < before - 500; });
  expectUnchangedStrip();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Of, BubbleTest,
    testing::Values(Named{"AFieldInThePage", "<input style='position: fixed; top: 200px; left: 9px; width: 200px'>"},
                    Named{"AFieldInTheMiddle", "<input style='position: fixed; top: 260px; left: 520px; width: 99px'>"},
                    Named{"AFieldAtTheBottom", "<input style='position: fixed; top: 510px; left: 9px; width: 200px'>"},
                    Named{"AFieldAtTheTop", "<input style='position: fixed; top: 0; left: 9px; width: 200px'>"},
                    Named{"AFieldJustAboveThePage", "<input style='position: fixed; top: -21px; width: 200px'>"},
                    Named{"AFieldAboveThePage", "<input style='position: fixed; top: -60px; width: 200px'>"},
                    Named{"AFieldFarAboveThePage", "<input style='position: fixed; top: -6000px; width: 200px'>"}),
    nameOf);

// Line breaks in the page's text would make the bubble as high as the window.
TEST_P(BubbleTest, StaysBelowTheStripWithManyLines) {
  startOnAndRecordStrip(
      std::string("<form>") + GetParam().script +
      "</form><script>const field = document.querySelector('input');"
      "field.setCustomValidity('example.com\\n'.repeat(40));"
      "onkeydown = async () => { field.reportValidity(); await frames(30); report('gone') }</script>");
  go();
  expectUnchangedStrip();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// A bubble could take the place of the prompt's text. It would also cover this part of the page, which no prompt does.
class BubbleAndPromptTest : public OwnAreaTest, public testing::WithParamInterface<Named> {
 protected:
  bool showsBubble() {
    const Picture all = picture();
    for (int y = 400; y < all.height(); ++y) {
      for (int x = 0; x < all.width(); ++x)
        if (all.colorAt(x, y) != kPageColor) return true;
    }
    return false;
  }
};

TEST_P(BubbleAndPromptTest, AreNotShownTogether) {
  tools::Response locked;
  locked.status = 401;
  locked.headers["WWW-Authenticate"] = "Basic realm=\"x\"";
  site.serve("/locked", locked);
  site.serve("/shown", page(""));
  site.hold("/shown");
  startOn(std::string("<input style='position: fixed; top: 340px; left: 240px; width: 200px; height: 8px'><script>"
                      "const field = document.querySelector('input'); field.setCustomValidity('Sign in to localhost');"
                      "onkeydown = async () => { ") +
          GetParam().script + "; await frames(30); report('gone') }</script>");
  untilPainted();
  screen.press(XK_g);
  untilPromptTakesInput();
  site.release("/shown");
  untilReported("gone");
  EXPECT_FALSE(showsBubble());
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(If, BubbleAndPromptTest,
                         testing::Values(Named{"TheBubbleIsFirst",
                                               "field.reportValidity(); await frames(30); fetch('/locked'); "
                                               "await fetch('/shown')"},
                                         Named{"ThePromptIsFirst",
                                               "fetch('/locked'); await fetch('/shown'); field.reportValidity()"}),
                         nameOf);

class ListTest : public OwnAreaTest, public testing::WithParamInterface<Named> {};

TEST_P(ListTest, DoesNotOpenAboveThePage) {
  startOnAndRecordStrip(GetParam().script +
                        std::string("<script>onclick = async () => { await frames(5); report('gone') };"
                                    "onmousedown = () => onclick()</script>"));
  clickAt(100, 10);
  untilReported("gone");
  expectUnchangedStrip();
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Of, ListTest,
    testing::Values(Named{"ASelection",
                          "<select style='position: fixed; left: 0; top: -60px; width: 200px; height: "
                          "100px'><option>a<option>b<option>c</select>"},
                    Named{"Proposals",
                          "<input list='them' style='position: fixed; left: 0; top: -60px; width: 200px; "
                          "height: 100px'><datalist id='them'><option>a<option>b</datalist>"}),
    nameOf);

TEST_F(OwnAreaTest, ACalendarOpensInsideThePage) {
  startOnAndRecordStrip(
      "<input type='date' style='position: fixed; top: -60px; left: 0; width: 200px; height: 40px'>"
      "<script>onkeydown = async () => { document.querySelector('input').showPicker();"
      "await frames(30); report('gone') }</script>");
  go();
  expectUnchangedStrip();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The viewer is a page of the web engine with buttons of its own.
TEST_F(OwnAreaTest, APdfIsShownInsideThePage) {
  constexpr char kPdf[] = R"(%PDF-1.4
1 0 obj <</Type /Catalog /Pages 2 0 R>> endobj
2 0 obj <</Type /Pages /Kids [3 0 R] /Count 1>> endobj
3 0 obj <</Type /Page /Parent 2 0 R /MediaBox [0 0 300 300] /Contents 4 0 R /Resources <<>>>> endobj
4 0 obj <</Length 34>> stream
0.5 0.25 0.125 rg 0 0 300 300 re f
endstream endobj
trailer <</Root 1 0 R>>
)";
  site.serve("/paper", tools::Response{200, kPdf, {{"Content-Type", "application/pdf"}}});
  startOnAndRecordStrip("<script>onkeydown = () => { location.href = '/paper' }</script>");
  screen.press(XK_g);
  until("the paper", [&] { return picture().find(0x804020, 5000).has_value(); });
  until("the unchanged strip", [&] { return isUnchangedStrip(); });
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(OwnAreaTest, ControlWClosesAWindowWithACalendar) {
  startOn(
      "<input type='date' style='position: fixed; top: 60px; left: 0; width: 200px; height: 40px'>"
      "<script>onkeydown = () => document.querySelector('input').showPicker()</script>");
  screen.press(XK_g);
  until("the calendar", [&] { return picture().colorAt(100, kStripHeight + 180) != kPageColor; });
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

class DragTest : public OwnAreaTest, public testing::WithParamInterface<Named> {};

// While the button is down, the image that the page has chosen would follow the pointer over the strip and the screen.
TEST_P(DragTest, ShowsNoImage) {
  startOn(std::string("<body style='height: 550px'>") + GetParam().script + R"(<script>
    const image = document.body.appendChild(document.createElement('canvas'));
    image.style.cssText = 'position: fixed; top: 560px';
    image.width = image.height = 600;
    image.getContext('2d').fillStyle = '#804020';
    image.getContext('2d').fillRect(0, 0, 600, 600);
    ondragstart = (event) => {
      event.dataTransfer.setData('text/plain', 'words');
      event.dataTransfer.setDragImage(image, 300, 300) };
    ondragend = async () => { await frames(5); report('ended') };
  </script>)");
  untilPainted();
  const Area frame = window().frame;
  screen.drag(frame.x + 60, frame.y + kStripHeight + 40, frame.x + 60, frame.y + 8);
  bool showsWindow = false;
  until("the end of the drag", [&] {
    showsWindow = showsWindow || screen.windows().size() > 1;
    return !reports().empty() && reports().back() == "ended";
  });
  EXPECT_FALSE(showsWindow);
  EXPECT_FALSE(screen.picture({0, 0, 1280, 1024}).find(0x804020, 1));
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
  screen.releaseButton();
}

INSTANTIATE_TEST_SUITE_P(
    Of, DragTest,
    testing::Values(
        Named{"AnElement",
              "<div draggable='true' style='position: fixed; inset: 0 0 300px 0; background: #206040'></div>"},
        Named{"ALink", "<a href='/x' style='position: fixed; inset: 0; font: 80px monospace'>link</a>"},
        Named{"SelectedText",
              "<p style='margin: 0; font: 80px monospace'>words</p><script>"
              "getSelection().selectAllChildren(document.querySelector('p'))</script>"}),
    nameOf);

// The page chooses the text of the field. Return is a reply only if no drag has taken the keyboard.
TEST_F(OwnAreaTest, NoTextIsDraggedOutOfAPrompt) {
  startOn("<script>onkeydown = () => { onkeydown = null; report(prompt('Your code?', 'W'.repeat(20))) }</script>");
  screen.press(XK_g);
  untilPromptTakesInput();
  constexpr unsigned kSelected = 0x3584e4;
  std::optional<Area> text;
  until("the selected text", [&] { return (text = picture().find(kSelected, 500)).has_value(); });
  const Area frame = window().frame;
  screen.drag(frame.x + text->x + 40, frame.y + text->y + text->height / 2, frame.x + 60, frame.y + 8);
  until("the reply", [this] {
    screen.press(XK_Return);  // lost while the refused drag still has the keyboard
    return reports().size() == 2;
  });
  EXPECT_EQ(reports().back(), std::string(20, 'W'));
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.releaseButton();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class CursorTest : public OwnAreaTest, public testing::WithParamInterface<int> {};

TEST_P(CursorTest, ImagesOfAPageAreNotShown) {
  startOn("<body style='height: 550px'><script>const size = " + std::to_string(GetParam()) + R"(;
    const image = document.createElement('canvas');
    image.width = image.height = size;
    image.getContext('2d').fillRect(0, 0, size, size);
    document.body.style.cursor = `url(${image.toDataURL()}) 0 ${size}, auto`;
    onmousemove = async () => { await frames(5); report('moved') };
  </script>)");
  const Area frame = window().frame;
  screen.moveTo(frame.x + 300, frame.y + kStripHeight + 100);
  screen.moveTo(frame.x + 300, frame.y + kStripHeight + 2);
  untilReported("moved");
  EXPECT_LE(screen.pointer().height, 32);
  EXPECT_GE(screen.pointer().y, frame.y);
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Pixels, CursorTest, testing::Values(20, 64, 128));

TEST_F(OwnAreaTest, NoTooltipsAreShown) {
  startOn(
      "<body style='height: 550px' title='Signed in to example.com'>"
      "<script>onmousemove = async () => { await frames(60); report('rested') }</script>");
  const Area frame = window().frame;
  screen.moveTo(frame.x + 300, frame.y + 200);
  screen.moveTo(frame.x + 304, frame.y + 204);
  untilReported("rested");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OwnAreaTest, AClosedPromptLeavesNoTrace) {
  startOnAndRecordStrip(
      "<script>onkeydown = () => { alert('Call us!'); frames(5).then(() => report('gone')) }</script>");
  screen.press(XK_g);
  replyWith(XK_Return);
  untilReported("gone");
  until("the page without a prompt", [&] { return picture().colorAt(340, 28) == kPageColor; });
  expectUnchangedStrip();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OwnAreaTest, NoScriptOpensAMenu) {
  startOn(
      "<input value='words' autofocus><script>const field = document.querySelector('input'); field.select();"
      "let tries = 0; setInterval(() => {"
      "  field.dispatchEvent(new MouseEvent('contextmenu', { bubbles: true, clientX: 20, clientY: 10, button: 2 }));"
      "  if (++tries === 10) frames(5).then(() => report('tried')) }, 100)</script>");
  untilReported("tried");
  EXPECT_THAT(screen.windows(), SizeIs(1));
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

class MenuTest : public OwnAreaTest {
 protected:
  // Returns the window that the menu belongs to.
  tools::WindowId openMenu() {
    startOn("<input value='words' style='position: fixed; inset: 0; width: 680px; height: 550px'>");
    const tools::WindowId id = window().id;
    clickRightAt(100, 50);
    until("the menu", [&] { return screen.windows().size() > 1; });
    return id;
  }
};

TEST_F(MenuTest, ControlWClosesAWindowWithAMenu) {
  (void)openMenu();
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(MenuTest, TheButtonClosesAWindowWithAMenu) {
  const auto id = openMenu();
  screen.close(id);
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(OwnAreaTest, ThePageDoesNotSetTheWindowsTitle) {
  startOn(
      "<title>Signed in</title><script>onkeydown = async () => {"
      "document.title = 'example.com'; await frames(5); report('gone') }</script>");
  go();
  EXPECT_EQ(window().title, "Example Product");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(OwnAreaTest, NoScriptMovesOrSizesTheWindow) {
  startOn(
      "<script>onkeydown = async () => { moveTo(0, 0); moveBy(9, 9); resizeTo(900, 900); resizeBy(99, 99);"
      "open('', '_self', 'fullscreen,width=900'); focus(); blur(); close(); await frames(5); report('gone') }"
      "</script>");
  const Area before = window().frame;
  go();
  const Area after = window().frame;
  EXPECT_THAT((std::vector<int>{after.x, after.y, after.width, after.height}),
              ElementsAre(before.x, before.y, before.width, before.height));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
