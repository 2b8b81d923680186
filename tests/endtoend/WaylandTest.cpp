// The window in a Wayland session, without an X server.

#include <signal.h>

#include <chrono>
#include <memory>
#include <optional>

#include "tests/endtoend/Compositor.h"
#include "tests/endtoend/EndToEndTest.h"

namespace endtoend {
namespace {

class WaylandTest : public EndToEndTest {
 protected:
  void SetUp() override {
    if (!Compositor::isPossible()) GTEST_SKIP() << "no weston here";
    compositor = std::make_unique<Compositor>(temporary("wayland"));
    options.environment = compositor->environment();
  }

  // The window ends before its session.
  ~WaylandTest() override { run.reset(); }

  // Polls the screen until it shows a color.
  Area waitForColor(unsigned color) {
    const auto deadline = std::chrono::steady_clock::now() + kTimeout;
    while (std::chrono::steady_clock::now() < deadline) {
      const std::optional<Picture> picture = compositor->picture();
      if (!picture) continue;
      if (const auto seen = picture->find(color)) return *seen;
    }
    throw std::runtime_error("timed out waiting for the color");
  }

  std::unique_ptr<Compositor> compositor;
};

TEST_F(WaylandTest, TheSignInEndsWithTheAddress) {
  site.serve("/signin", pageThatGoesTo(site.address("/done?code=1")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
}

TEST_F(WaylandTest, AnEnterprisePageEnlargesTheWindow) {
  site.serve("/signin", redirectTo(site.address("/start?redirect_uri=" + site.address("/staff"))));
  site.serve("/staff", page("<style>body { background: #123456 }</style>"
                            "<script>onresize = onload = () => { if (innerWidth == 800 && innerHeight == 600) "
                            "location.href = '/done?code=1' }</script>"));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
}

TEST_F(WaylandTest, ThePageFillsTheWindow) {
  site.serve("/signin", page("<style>body { background: #123456; margin: 0 }</style>"));
  start();
  const Area shown = waitForColor(0x123456);
  EXPECT_EQ(shown.width, 680);
  EXPECT_EQ(shown.height, 550);
}

// The protocol's debugging output contains every key that the user presses.
TEST_F(WaylandTest, PrintsNoEvents) {
  options.environment["WAYLAND_DEBUG"] = "1";
  site.serve("/signin", redirectTo(site.address("/done?code=1")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
  EXPECT_THAT(run->standardError(), testing::Not(testing::HasSubstr("wl_")));
}

TEST_F(WaylandTest, ATerminationSignalReportsAClosedWindow) {
  start();
  untilRequested("/signin");
  run->signal(SIGTERM);
  EXPECT_EQ(message(), kWindowClosed);
}

TEST_F(WaylandTest, ALostCompositorReportsAClosedWindow) {
  start();
  untilRequested("/signin");
  compositor.reset();
  EXPECT_EQ(run->exitStatus(), 1);
  EXPECT_EQ(pipe.text(), kWindowClosed);
}

TEST_F(WaylandTest, ADisplayGivenByPathWorks) {
  options.environment["WAYLAND_DISPLAY"] = options.environment["XDG_RUNTIME_DIR"] + "/wayland";
  site.serve("/signin", pageThatGoesTo(site.address("/done?code=1")));
  EXPECT_EQ(messageOfARun(), result(site.address("/done?code=1")));
}

}  // namespace
}  // namespace endtoend
