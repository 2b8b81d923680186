// The window has the icon and the class that the desktop file names, also if the package is not installed.

#include "tests/endtoend/EndToEndTest.h"

#include <string>

#include "tests/support/Files.h"

namespace {

using testing::Contains;
using testing::IsEmpty;
using testing::Not;

class DesktopTest : public endtoend::EndToEndTest {
 protected:
  void startAndWaitForThePage() {
    start();
    untilRequested("/signin");
  }
};

TEST_F(DesktopTest, WindowHasAnIcon) {
  startAndWaitForThePage();
  EXPECT_THAT(screen.numbersOf(window().id, "_NET_WM_ICON"), Not(IsEmpty()));
}

TEST_F(DesktopTest, WindowHasTheClassOfTheDesktopFile) {
  startAndWaitForThePage();
  const std::string name = screen.textOf(window().id, "WM_CLASS").c_str();  // the first of two NUL-terminated texts
  EXPECT_EQ(name, "svo-signin");
  EXPECT_THAT(support::linesOf(DESKTOP_FILE), Contains("StartupWMClass=" + name));
}

}  // namespace
