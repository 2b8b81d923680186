// Script dialogs: the user's reply reaches the page, and no dialog blocks the window.

#include "tests/endtoend/PromptTest.h"

#include <algorithm>
#include <chrono>
#include <string>
#include <vector>

namespace endtoend {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Ge;

class DialogTest : public PromptTest {
 protected:
  // Starts with a page that shows a dialog and reports its result.
  void startOnDialog(const std::string& expression) {
    startOn("<script>onload = async () => { await frames(3); await report('asking'); report('' + " + expression +
            ") }</script>");
    untilReported("asking");
  }
};

TEST_F(DialogTest, ReturnAcceptsAConfirmation) {
  startOnDialog("confirm('Really?')");
  replyWith(XK_Return);
  untilReported("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, EscapeDeclinesAConfirmation) {
  startOnDialog("confirm('Really?')");
  replyWith(XK_Escape);
  untilReported("false");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, TypingReplacesTheDefaultText) {
  startOnDialog("prompt('Your code?', '1234')");
  untilPromptTakesInput();
  screen.type("code 7");
  screen.press(XK_Return);
  untilReported("code 7");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, ReturnAcceptsTheDefaultText) {
  startOnDialog("prompt('Your code?', '1234')");
  replyWith(XK_Return);
  untilReported("1234");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, EscapeReturnsNullFromAPrompt) {
  startOnDialog("prompt('Your code?', '1234')");
  replyWith(XK_Escape);
  untilReported("null");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, AReplyReturnsTheFocusToThePage) {
  // Not `autofocus`: an alert in `onload` may come before the frame in which WebKit applies it.
  startOn(
      "<input><script>onload = async () => { document.querySelector('input').focus(); await report('asking');"
      "alert('Terms of use'); report('read') };"
      "onkeydown = (event) => { if (event.key === 'Enter') report('typed ' + document.activeElement.value) }</script>");
  untilReported("asking");
  replyWith(XK_Return);
  untilReported("read");
  untilPromptIsClosed();
  screen.type("me");
  screen.press(XK_Return);
  untilReported("typed me");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, APageMayAskAtOnce) {
  site.serve("/signin", pageWith("<script>alert('Terms of use');"
                                 "onload = async () => { await frames(2); report('painted') }</script>"));
  start();
  screen.focus(window().id);
  replyWith(XK_Return);
  untilReported("painted");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, ThePageGetsNoClicksDuringAPrompt) {
  startOn(
      "<body style='height: 500px'><script>onclick = () => { onclick = null; report('clicked') };"
      "onload = async () => { await report('asking'); alert('Terms of use'); await frames(5); await report('read') }"
      "</script>");
  untilReported("asking");
  untilPromptTakesInput();
  clickAt(340, 480);
  screen.press(XK_Return);
  untilReported("read");
  untilPromptIsClosed();
  EXPECT_THAT(reports(), testing::UnorderedElementsAre("loaded", "asking", "read"));
  clickAt(340, 480);
  untilReported("clicked");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// A reply before the delay is over would be a key that the user meant for the page.
TEST_F(DialogTest, DropsKeysOfTheFirstMoments) {
  startOn(
      "<script>onload = async () => { await frames(3); const start = performance.now();"
      "  const accepted = confirm('Really?');"
      "  report(accepted && performance.now() - start < 700 ? 'at once' : 'later') }</script>");
  untilPromptIsShown();
  screen.press(XK_Return);
  until("a reply", [this] {
    if (promptTakesInput()) screen.press(XK_Escape);
    return reports().size() > 1;
  });
  EXPECT_EQ(reports().back(), "later");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// Where the machine is so slow that the letter arrives after the delay, the prompt has the letter.
TEST_F(DialogTest, WaitsForAPauseInTyping) {
  startOnDialog("prompt('Your code?')");
  untilPromptIsShown();
  const auto typed = std::chrono::steady_clock::now();
  screen.press(XK_x);
  untilPromptTakesInput();
  const auto pause = std::chrono::steady_clock::now() - typed;
  screen.press(XK_y);
  screen.press(XK_Return);
  until("a reply", [this] { return reports().size() > 2; });
  if (reports().back() != "xy") {
    EXPECT_EQ(reports().back(), "y");
    EXPECT_THAT(pause, Ge(std::chrono::milliseconds(700)));
  }
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class FrameDialogTest : public DialogTest, public testing::WithParamInterface<Named> {
 protected:
  LoopbackServer other;
};

TEST_P(FrameDialogTest, OfAnotherSiteGetsNoPrompt) {
  other.serve("/frame", pageWith(std::string("<body><script>onload = async () => report('reply ' + await (") +
                                 GetParam().script + ")())</script>"));
  other.serve("/empty", pageWith(""));
  startOn("<iframe src='" + other.address("/frame") + "'></iframe>");
  until("the frame's report", [this] {
    return testing::Matches(Contains(AnyOf("reply undefined", "reply false", "reply null")))(reportsTo(other));
  });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(
    Of, FrameDialogTest,
    testing::Values(Named{"Alert", "() => alert('Call us!')"}, Named{"Confirm", "() => confirm('Really?')"},
                    Named{"Prompt", "() => prompt('Your code?', '1234')"},
                    Named{"ConfirmOfAnEmptyFrame",
                          "() => { const inner = document.createElement('iframe'); document.body.append(inner);"
                          "  return inner.contentWindow.confirm('Really?') }"},
                    Named{"ConfirmOfAnInnerFrame",
                          "async () => { const inner = document.createElement('iframe'); inner.src = '/empty';"
                          "  document.body.append(inner); await new Promise((done) => { inner.onload = done });"
                          "  return inner.contentWindow.confirm('Really?') }"}),
    nameOf);

// A page can read its own secret, and its server remembers it. A later page's frame from that server must not use it.
TEST_F(DialogTest, AnEarlierPageCannotHelpAFrame) {
  LoopbackServer other;
  other.serve("/empty", pageWith(""));
  other.serve("/first", pageWith("<body><script>const inner = document.createElement('iframe'); inner.src = '/empty';"
                                 "document.body.append(inner);"
                                 "inner.contentWindow.confirm = (text) => { location.href = '" +
                                 site.address("/signin") +
                                 "?' + text };"
                                 "inner.onload = () => inner.contentWindow.confirm('')</script>"));
  other.serve("/frame", pageWith("<script>onload = async () => report('reply ' + location.search.length + "
                                 "confirm(location.search.slice(1) + 'Really?'))</script>"));
  site.serve("/signin",
             pageWith("<body><script>const frame = document.createElement('iframe');"
                      "frame.src = '" +
                      other.address("/frame") + "' + location.search; document.body.append(frame)</script>"));
  options.signIn = other.address("/first");
  start();
  constexpr char kReply[] = "reply 37false";  // a question mark and a UUID
  until("the frame's report", [&] {
    EXPECT_FALSE(promptTakesInput());
    return HasFailure() || testing::Matches(Contains(kReply))(reportsTo(other));
  });
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_F(DialogTest, AFrameOfThisSiteGetsAPrompt) {
  site.serve("/frame", pageWith("<script>onload = () => report('' + confirm('Really?'))</script>"));
  startOn("<iframe src='/frame'></iframe>");
  replyWith(XK_Return);
  untilReported("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class OpenDialogTest : public DialogTest, public testing::WithParamInterface<const char*> {};

TEST_P(OpenDialogTest, DoesNotBlockTheCloseButton) {
  startOnDialog(GetParam() + std::string("('Really?')"));
  untilPromptIsShown();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

TEST_P(OpenDialogTest, DoesNotBlockControlW) {
  startOnDialog(GetParam() + std::string("('Really?')"));
  replyWith(XK_w);  // an ordinary letter
  screen.press(XK_w, {XK_Control_L});
  EXPECT_EQ(message(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Kinds, OpenDialogTest, testing::Values("alert", "confirm", "prompt"),
                         [](const auto& each) { return std::string(each.param); });

TEST_F(DialogTest, ThePromptNamesTheSite) {
  const auto heading = [this] {
    untilPromptIsShown();
    const Area frame = window().frame;
    const Picture seen = screen.picture({frame.x + 120, frame.y + 30, 400, 30});
    std::vector<unsigned> colors;
    for (int y = 0; y < seen.height(); ++y) {
      for (int x = 0; x < seen.width(); ++x)
        colors.push_back(seen.colorAt(x, y));
    }
    return colors;
  };
  const std::string here = site.address("/signin");
  startOnDialog("alert('Terms of use')");
  const std::vector<unsigned> headingForTheNumber = heading();
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);

  options.signIn = "http://localhost" + here.substr(here.rfind(':'));
  start();
  until("both reports of the second page", [this] { return reports().size() == 4; });
  EXPECT_FALSE(heading() == headingForTheNumber);
}

// Nothing in a line of this letter is as wide as a hyphen.
TEST_F(DialogTest, ABrokenWordGetsNoHyphen) {
  startOnDialog("alert('l'.repeat(400))");
  untilPromptTakesInput();
  const Picture all = picture();
  const Frame prompt = promptIn(all);
  int widest = 0;
  for (int y = prompt.end - 100; y < prompt.end - 60; ++y) {
    for (int x = prompt.left, width = 0; x < prompt.right; ++x) {
      width = (all.colorAt(x, y) & 0xff) < 0xc0 ? width + 1 : 0;
      widest = std::max(widest, width);
    }
  }
  EXPECT_THAT(widest, testing::AllOf(Ge(1), testing::Le(2)));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

class LongTextTest : public DialogTest, public testing::WithParamInterface<Named> {};

TEST_P(LongTextTest, KeepsTheWindowsSizeAndTheButtons) {
  startOnDialog(std::string("confirm(") + GetParam().script + ")");
  untilPromptIsShown();
  EXPECT_EQ(window().frame.width, 680);
  EXPECT_EQ(window().frame.height, 570);
  const Picture all = picture();
  for (const int x : {5, 340, 675})
    EXPECT_EQ(all.colorAt(x, 540), kPageColor) << x;
  EXPECT_EQ(all.colorAt(5, 100), kPageColor);
  EXPECT_EQ(all.colorAt(675, 100), kPageColor);
  replyWith(XK_Return);
  untilReported("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

INSTANTIATE_TEST_SUITE_P(Of, LongTextTest,
                         testing::Values(Named{"Sentences", "'word '.repeat(20000)"},
                                         Named{"OneWord", "'W'.repeat(100000)"},
                                         Named{"Paragraphs", "'x\\u2028'.repeat(50000)"},
                                         Named{"VerticalTabs", "'x\\v\\f'.repeat(50000)"}),
                         nameOf);

TEST_F(DialogTest, ALargePromptFitsIntoTheWindow) {
  options.environment["GDK_DPI_SCALE"] = "2";
  startOnDialog("confirm('word '.repeat(20000))");
  untilPromptIsShown();
  const Picture all = picture();
  const unsigned promptColor = all.colorAt(all.width() / 2, 60);
  for (const int x : {4, all.width() - 5})
    EXPECT_NE(all.colorAt(x, 200), promptColor) << x;
  EXPECT_NE(all.colorAt(all.width() / 2, all.height() - 4), promptColor);
  replyWith(XK_Return);
  untilReported("true");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// The blocks are the end of the message.
TEST_F(DialogTest, ALargePromptShowsItsWholeMessage) {
  constexpr unsigned kTextColor = 0x2e3436;
  options.environment["GDK_DPI_SCALE"] = "2";
  startOnDialog("alert('word '.repeat(20) + '\\u2588'.repeat(16))");
  untilPromptTakesInput();
  EXPECT_TRUE(picture().find(kTextColor, 6000));
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

// Each dialog has one line more than the one before.
TEST_F(DialogTest, APageShowsFivePromptsPerUserInput) {
  startOn(
      "<script>let shown = 0;"
      "const show = () => { for (let i = 0; i < 9; ++i) shown += confirm('x\\u2028'.repeat(shown));"
      "  report('shown ' + shown) };"
      "onkeydown = show; onclick = show</script><body style='height: 550px'>");
  untilPainted();
  screen.press(XK_g);
  int end = 0;
  for (int dialog = 0; dialog < 5; ++dialog) {
    end = untilPromptEndsBelow(end);
    screen.press(XK_Return);
  }
  untilReported("shown 5");
  untilPromptIsClosed();
  clickAt(340, 500);
  for (int dialog = 5; dialog < 10; ++dialog) {
    end = untilPromptEndsBelow(end);
    screen.press(XK_Return);
  }
  untilReported("shown 10");
  EXPECT_EQ(messageAfterClosing(), kWindowClosed);
}

}  // namespace
}  // namespace endtoend
