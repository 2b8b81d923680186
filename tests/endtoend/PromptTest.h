// A fixture for tests of prompts.

#pragma once

#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {

class PromptTest : public PageTest {
 protected:
  void untilPromptIsShown() {
    until("the prompt", [this] { return promptIsShown(); });
  }
  void untilPromptIsClosed() {
    until("the page without a prompt", [this] { return !promptIsShown(); });
  }

  // Waits for a prompt that ends below a row of the window, and returns its last row. Distinguishes prompts with
  // increasing numbers of lines.
  int untilPromptEndsBelow(int row) {
    int end = 0;
    until("a longer prompt", [&] { return promptIsShown() && pageShowsBelow() && (end = promptEnd()) > row; });
    return end;
  }

  // Waits for the prompt, then presses the key.
  void replyWith(KeySymbol key) {
    untilPromptIsShown();
    screen.press(key);
  }

 private:
  // A prompt has the color of the strip and overlaps the page's area.
  bool promptIsShown() {
    const Picture all = picture();
    return all.colourAt(all.width() / 2, 28) == all.colourAt(all.width() - 10, 3);
  }

  bool pageShowsBelow() {
    const Picture all = picture();
    return all.colourAt(all.width() / 2, all.height() - 1) == kPageColor;
  }

  int promptEnd() {
    const Picture all = picture();
    int row = all.height() - 1;
    while (row > 0 && all.colourAt(all.width() / 2, row) == kPageColor)
      --row;
    return row;
  }
};

}  // namespace endtoend
