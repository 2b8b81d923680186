// A fixture for tests of prompts.

#pragma once

#include <algorithm>
#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {

class PromptTest : public PageTest {
 protected:
  using PageTest::PageTest;

  void untilPromptIsShown() {
    until("the prompt", [this] { return showsPrompt(picture()); });
  }
  void untilPromptIsClosed() {
    until("the page without a prompt", [this] { return !showsPrompt(picture()); });
  }

  // A prompt drops input for a short time after it is shown.
  void untilPromptTakesInput() {
    until("the prompt's buttons", [this] { return promptTakesInput(); });
  }

  // Waits for a prompt that takes input and ends below a row of the window, and returns its last row. Distinguishes
  // prompts with increasing numbers of lines.
  int untilPromptEndsBelow(int row) {
    int end = 0;
    until("a longer prompt", [&] {
      const Picture all = picture();
      return showsPrompt(all) && showsPageBelow(all) && buttonsAreDark(all) && (end = promptIn(all).end) > row;
    });
    return end;
  }

  // Waits for the prompt, then presses the key.
  void replyWith(KeySymbol key) {
    untilPromptTakesInput();
    screen.press(key);
  }

  bool promptTakesInput() {
    const Picture all = picture();
    return showsPrompt(all) && buttonsAreDark(all);
  }

  // A prompt has the color of the strip, overlaps the page's area, and is narrower than the window.
  static bool showsPrompt(const Picture& all) {
    return promptIn(all).left > 0 && all.colorAt(all.width() / 2, kInPadding) == all.colorAt(all.width() - 10, 3);
  }

  struct Frame {
    int left = 0, right = 0, end = 0;
  };

  // The inside of the prompt's padding, below the strip.
  static Frame promptIn(const Picture& all) {
    const unsigned color = all.colorAt(all.width() / 2, kInPadding);
    Frame frame{all.width() / 2, all.width() / 2, kInPadding};
    while (frame.left > 0 && all.colorAt(frame.left - 1, kInPadding) == color)
      --frame.left;
    while (frame.right < all.width() - 1 && all.colorAt(frame.right + 1, kInPadding) == color)
      ++frame.right;
    while (frame.end < all.height() - 1 && all.colorAt(frame.left + 4, frame.end + 1) == color)
      ++frame.end;
    return frame;
  }

 private:
  // An area that is not painted yet has the color of the prompt.
  static bool showsPageBelow(const Picture& all) {
    return all.colorAt(all.width() / 2, all.height() - 1) != all.colorAt(all.width() / 2, kInPadding);
  }

  // The buttons are the last row of the prompt. Their text is gray while they take no input.
  static bool buttonsAreDark(const Picture& all) {
    constexpr int kButtons = 58;  // with the padding below them
    constexpr unsigned kDark = 0x50;
    const Frame frame = promptIn(all);
    for (int y = std::max(frame.end - kButtons, kInPadding); y < frame.end; ++y) {
      for (int x = frame.left; x < frame.right; ++x) {
        const unsigned color = all.colorAt(x, y);
        if ((color >> 16 & 0xff) < kDark && (color >> 8 & 0xff) < kDark && (color & 0xff) < kDark) return true;
      }
    }
    return false;
  }

  static constexpr int kInPadding = 28;  // a row above the prompt's text
};

}  // namespace endtoend
