// The window under a window manager, as in a desktop session.

#include "tests/endtoend/EndToEndTest.h"

#include <memory>
#include <vector>

#include "tests/endtoend/OtherWindow.h"
#include "tests/endtoend/WindowManager.h"

namespace endtoend {
namespace {

using testing::Contains;
using testing::Not;

constexpr int kTitleBar = 20;

class WindowManagerTest : public EndToEndTest {
 protected:
  using EndToEndTest::EndToEndTest;

  void SetUp() override {
    if (!WindowManager::isPossible()) GTEST_SKIP() << "no openbox here";
    manager = std::make_unique<WindowManager>(screen, display.name(), temporary("openbox"));
    other = std::make_unique<OtherWindow>(display.name(), Area{50, 50, 300, 200});
  }

  // The window including the window manager's border.
  Area borderedFrame() {
    std::vector<unsigned long> border;
    until("the border", [&] { return !(border = screen.numbersOf(window().id, "_NET_FRAME_EXTENTS")).empty(); });
    const int left = static_cast<int>(border[0]), right = static_cast<int>(border[1]);
    const int top = static_cast<int>(border[2]), bottom = static_cast<int>(border[3]);
    const Area inside = window().frame;
    return {inside.x - left, inside.y - top, inside.width + left + right, inside.height + top + bottom};
  }

  void untilActive(const std::string& what, tools::WindowId id) {
    until(what + " to be active", [&] { return manager->activeWindow() == id; });
  }

  // Activates the other window by a click.
  void activateOtherWindow() {
    untilActive("the other window", other->id());
    screen.click(100, 100);
    screen.type("x");
  }

  unsigned long desktopOf(tools::WindowId id) {
    std::vector<unsigned long> desktop;
    until("its desktop", [&] { return !(desktop = screen.numbersOf(id, "_NET_WM_DESKTOP")).empty(); });
    return desktop.front();
  }

  std::unique_ptr<WindowManager> manager;
  std::unique_ptr<OtherWindow> other;
};

TEST_F(WindowManagerTest, ItIsRaisedAndGetsTheFocus) {
  activateOtherWindow();
  start();
  untilActive("the window", window().id);
  EXPECT_EQ(manager->topmostWindow(), window().id);
}

TEST_F(WindowManagerTest, ItOpensOnTheCurrentDesktop) {
  activateOtherWindow();
  screen.request(screen.root(), "_NET_CURRENT_DESKTOP", {2});
  until("the other desktop", [&] { return manager->currentDesktop() == 2; });
  start();
  untilActive("the window", window().id);
  EXPECT_EQ(desktopOf(window().id), 2u);
}

TEST_F(WindowManagerTest, ItIsRaisedForAnOldLauncher) {
  options.environment["DESKTOP_STARTUP_ID"] = "launcher-1-host-svo_TIME1";
  activateOtherWindow();
  start();
  untilActive("the window", window().id);
  EXPECT_EQ(manager->topmostWindow(), window().id);
  EXPECT_EQ(desktopOf(window().id), manager->currentDesktop());
}

TEST_F(WindowManagerTest, ItIsCentered) {
  start();
  untilActive("the window", window().id);
  const Area frame = borderedFrame();
  EXPECT_NEAR(frame.x + frame.width / 2, 1280 / 2, kTitleBar);
  EXPECT_NEAR(frame.y + frame.height / 2, 1024 / 2, kTitleBar);
}

class SmallScreenTest : public WindowManagerTest {
 protected:
  SmallScreenTest() : WindowManagerTest({800, 640}) {}
};

TEST_F(SmallScreenTest, ItFitsOnTheScreen) {
  start();
  untilActive("the window", window().id);
  const Area frame = borderedFrame();
  EXPECT_GE(frame.y, 0);
  EXPECT_LE(frame.y + frame.height, 640);
  EXPECT_EQ(window().frame.height, 570);
}

TEST_F(WindowManagerTest, AltAndF4CloseIt) {
  start();
  untilRequested("/signin");
  untilActive("the window", window().id);
  screen.press(XK_F4, {XK_Alt_L});
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(WindowManagerTest, OnlyTheEnterpriseWindowCanBeMaximized) {
  const auto allowedActions = [this] { return screen.namesOf(window().id, "_NET_WM_ALLOWED_ACTIONS"); };
  site.serve("/signin", pageThatWaitsForAClick(site.address("/start?redirect_uri=" + site.address("/staff"))));
  start();
  untilRequested("/clickable");
  untilActive("the window", window().id);
  EXPECT_THAT(allowedActions(), Contains("_NET_WM_ACTION_MOVE"));
  EXPECT_THAT(allowedActions(), Not(Contains("_NET_WM_ACTION_MAXIMIZE_VERT")));
  EXPECT_THAT(allowedActions(), Not(Contains("_NET_WM_ACTION_RESIZE")));

  click();
  untilRequested("/staff");
  until("the size", [this] { return window().frame.width == 800; });
  until("the action to maximize",
        [&] { return testing::Value(allowedActions(), Contains("_NET_WM_ACTION_MAXIMIZE_VERT")); });
  const Area frame = borderedFrame();
  screen.doubleClick(frame.x + frame.width / 2, frame.y + 5);
  until("the whole screen", [this] { return window().frame.width == 1280; });
}

}  // namespace
}  // namespace endtoend
