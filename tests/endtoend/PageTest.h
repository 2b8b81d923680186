// Tests whose pages tell what they see.

#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {

// A page's part, or its script, under the name that its test gets.
struct Named {
  const char* name;
  const char* script;
};

void PrintTo(const Named& named, std::ostream* out);
std::string nameOf(const testing::TestParamInfo<Named>& info);

class PageTest : public EndToEndTest {
 protected:
  // What every page of these tests is painted with, where its body leaves it.
  static constexpr unsigned kPageColour = 0x204060;

  using EndToEndTest::EndToEndTest;

  // A page in that colour. Its scripts may call
  //   tell(text)     what told() gives
  //   frames(count)  gives a promise of so many drawn frames; by then the window knows all that was asked of it before
  static tools::Answer pageWith(const std::string& body);

  // Starts with such a page in the window, which tells "loaded", and the keyboard in the window.
  void startOn(const std::string& body);

  // A page that is kept busy from then on shows no more than this.
  void untilPainted();

  std::vector<std::string> told() const;
  void untilTold(const std::string& text);

  Picture picture() { return screen.picture(window().frame); }

  // At a place in the page.
  void clickAt(int x, int y);
  void clickRightAt(int x, int y);
};

}  // namespace endtoend
