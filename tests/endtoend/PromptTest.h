// Tests of the sheet that hangs down from the strip and asks the person something.

#pragma once

#include <string>

#include "tests/endtoend/PageTest.h"

namespace endtoend {

class SheetTest : public PageTest {
 protected:
  // A person answers what can be seen.
  void untilSheetHangs() {
    until("the sheet", [this] { return sheetHangs(); });
  }
  void untilSheetIsGone() {
    until("the page without the sheet", [this] { return !sheetHangs(); });
  }

  // Waits for a sheet that ends below a row of the window, and gives the row that it ends at: each question with a line
  // more than the one before is told apart.
  int untilSheetEndsBelow(int row) {
    int end = 0;
    until("a longer sheet", [&] { return sheetHangs() && pageShowsBelow() && (end = sheetEnd()) > row; });
    return end;
  }

  // Waits for the sheet, then presses the key.
  void answer(KeySymbol key) {
    untilSheetHangs();
    screen.press(key);
  }

 private:
  // It has the colour of the strip and hangs into the page's area.
  bool sheetHangs() {
    const Picture all = picture();
    return all.colourAt(all.width() / 2, 28) == all.colourAt(all.width() - 10, 3);
  }

  bool pageShowsBelow() {
    const Picture all = picture();
    return all.colourAt(all.width() / 2, all.height() - 1) == kPageColour;
  }

  int sheetEnd() {
    const Picture all = picture();
    int row = all.height() - 1;
    while (row > 0 && all.colourAt(all.width() / 2, row) == kPageColour)
      --row;
    return row;
  }
};

}  // namespace endtoend
