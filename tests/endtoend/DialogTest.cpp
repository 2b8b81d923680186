// Script dialogs: what the person answers reaches the page, and no page makes them a cage.

#include "tests/endtoend/SheetTest.h"

#include <string>
#include <vector>

namespace endtoend {
namespace {

class DialogTest : public SheetTest {
 protected:
  // Starts with a page that shows a dialog and tells what came of it.
  void startOnDialog(const std::string& expression) {
    startOn("<script>onload = async () => { await frames(3); await tell('asking'); tell('' + " + expression +
            ") }</script>");
    untilTold("asking");
  }
};

TEST_F(DialogTest, ReturnAcceptsAConfirmation) {
  startOnDialog("confirm('Really?')");
  answer(XK_Return);
  untilTold("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, EscapeDeclinesAConfirmation) {
  startOnDialog("confirm('Really?')");
  answer(XK_Escape);
  untilTold("false");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, TypingReplacesTheDefaultText) {
  startOnDialog("prompt('Your code?', '1234')");
  untilSheetHangs();
  screen.type("code 7");
  screen.press(XK_Return);
  untilTold("code 7");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, ReturnAcceptsTheDefaultText) {
  startOnDialog("prompt('Your code?', '1234')");
  answer(XK_Return);
  untilTold("1234");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, EscapeReturnsNullFromAPrompt) {
  startOnDialog("prompt('Your code?', '1234')");
  answer(XK_Escape);
  untilTold("null");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, AReplyReturnsTheFocusToThePage) {
  startOn(
      "<input autofocus><script>onload = async () => { await tell('asking'); alert('Terms of use'); tell('read') };"
      "onkeydown = (event) => { if (event.key === 'Enter') tell('typed ' + document.activeElement.value) }</script>");
  untilTold("asking");
  answer(XK_Return);
  untilTold("read");
  untilSheetIsGone();
  screen.type("me");
  screen.press(XK_Return);
  untilTold("typed me");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, ThePageGetsNoClicksDuringAPrompt) {
  startOn(
      "<body style='height: 550px'><script>onclick = () => tell('clicked');"
      "onload = async () => { await tell('asking'); alert('Terms of use'); await tell('read') }</script>");
  untilTold("asking");
  untilSheetHangs();
  clickAt(340, 500);
  screen.press(XK_Return);
  untilTold("read");
  untilSheetIsGone();
  clickAt(340, 500);
  untilTold("clicked");
  EXPECT_THAT(told(), testing::UnorderedElementsAre("loaded", "asking", "read", "clicked"));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class OpenDialogTest : public DialogTest, public testing::WithParamInterface<const char*> {};

TEST_P(OpenDialogTest, DoesNotBlockTheCloseButton) {
  startOnDialog(GetParam() + std::string("('Really?')"));
  untilSheetHangs();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_P(OpenDialogTest, DoesNotBlockControlW) {
  startOnDialog(GetParam() + std::string("('Really?')"));
  answer(XK_w);  // an ordinary letter
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OpenDialogTest, testing::Values("alert", "confirm", "prompt"),
                         [](const auto& each) { return std::string(each.param); });

TEST_F(DialogTest, ThePromptNamesTheSite) {
  const auto heading = [this] {
    untilSheetHangs();
    const Area frame = window().frame;
    const Picture seen = screen.picture({frame.x + 120, frame.y + 30, 400, 30});
    std::vector<unsigned> colours;
    for (int y = 0; y < seen.height(); ++y) {
      for (int x = 0; x < seen.width(); ++x)
        colours.push_back(seen.colourAt(x, y));
    }
    return colours;
  };
  const std::string here = site.address("/signin");
  startOnDialog("alert('Terms of use')");
  const std::vector<unsigned> ofTheNumber = heading();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);

  options.signIn = "http://localhost" + here.substr(here.rfind(':'));
  start();
  until("the second page", [this] {
    return told() == std::vector<std::string>{"loaded", "asking", "loaded", "asking"};
  });
  EXPECT_FALSE(heading() == ofTheNumber);
}

class LongWordsTest : public DialogTest, public testing::WithParamInterface<Named> {};

TEST_P(LongWordsTest, KeepsTheWindowsSizeAndTheButtons) {
  startOnDialog(std::string("confirm(") + GetParam().script + ")");
  untilSheetHangs();
  EXPECT_EQ(window().frame.width, 680);
  EXPECT_EQ(window().frame.height, 570);
  const Picture all = picture();
  for (const int x : {5, 340, 675})
    EXPECT_EQ(all.colourAt(x, 540), kPageColour) << x;
  EXPECT_EQ(all.colourAt(5, 100), kPageColour);
  EXPECT_EQ(all.colourAt(675, 100), kPageColour);
  screen.press(XK_Return);
  untilTold("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Of, LongWordsTest,
                         testing::Values(Named{"Sentences", "'word '.repeat(20000)"},
                                         Named{"OneWord", "'W'.repeat(100000)"},
                                         Named{"Paragraphs", "'x\\u2028'.repeat(50000)"},
                                         Named{"VerticalTabs", "'x\\v\\f'.repeat(50000)"}),
                         nameOf);

TEST_F(DialogTest, ALargePromptFitsIntoTheWindow) {
  options.environment["GDK_DPI_SCALE"] = "2";
  startOnDialog("confirm('word '.repeat(20000))");
  untilSheetHangs();
  const Picture all = picture();
  const unsigned ofTheSheet = all.colourAt(all.width() / 2, 60);
  for (const int x : {4, all.width() - 5})
    EXPECT_NE(all.colourAt(x, 200), ofTheSheet) << x;
  EXPECT_NE(all.colourAt(all.width() / 2, all.height() - 4), ofTheSheet);
  screen.press(XK_Return);
  untilTold("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The dialogs have a line more each.
TEST_F(DialogTest, APageShowsFivePromptsPerUserInput) {
  startOn(
      "<script>let shown = 0;"
      "const show = () => { for (let i = 0; i < 9; ++i) shown += confirm('x\\u2028'.repeat(shown));"
      "  tell('shown ' + shown) };"
      "onkeydown = show; onclick = show</script><body style='height: 550px'>");
  untilPainted();
  screen.press(XK_g);
  int end = 0;
  for (int dialog = 0; dialog < 5; ++dialog) {
    end = untilSheetEndsBelow(end);
    screen.press(XK_Return);
  }
  untilTold("shown 5");
  untilSheetIsGone();
  clickAt(340, 500);
  for (int dialog = 5; dialog < 10; ++dialog) {
    end = untilSheetEndsBelow(end);
    screen.press(XK_Return);
  }
  untilTold("shown 10");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
