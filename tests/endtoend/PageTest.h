// A fixture for pages that report to the test.

#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {

// A part of a page, or its script, with the name of its test.
struct Named {
  const char* name;
  const char* script;
};

void PrintTo(const Named& named, std::ostream* out);
std::string nameOf(const testing::TestParamInfo<Named>& info);

class PageTest : public EndToEndTest {
 protected:
  // The background color of every page of these tests.
  static constexpr unsigned kPageColor = 0x204060;

  using EndToEndTest::EndToEndTest;

  // A page in that color. Its scripts may call:
  //   report(text)   adds `text` to reports()
  //   frames(count)  returns a promise that resolves after `count` drawn frames. The window has then received every
  //                  earlier request of the page.
  static tools::Response pageWith(const std::string& body);

  // Starts with such a page, which reports "loaded", and gives the window the keyboard focus.
  void startOn(const std::string& body);

  // Waits until the page is painted. A page that is busy afterward paints nothing more.
  void untilPainted();

  std::vector<std::string> reports() const { return reportsTo(site); }
  static std::vector<std::string> reportsTo(const LoopbackServer& server);
  void untilReported(const std::string& text);

  Picture picture() { return screen.picture(window().frame); }

  // Coordinates within the page.
  void clickAt(int x, int y);
  void clickRightAt(int x, int y);
};

}  // namespace endtoend
