// The native utility library and other programs of a desktop.

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>
#include <filesystem>
#include <memory>
#include <string>

#include "nativeutils/NativeUtils.h"
#include "tests/endtoend/OtherWindow.h"
#include "tests/endtoend/SessionBus.h"
#include "tests/endtoend/WindowManager.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Environment.h"
#include "tests/support/Files.h"
#include "tests/support/Semaphores.h"
#include "tests/tools/hand/Screen.h"
#include "tests/tools/hand/VirtualDisplay.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

using support::Variable;
using testing::StartsWith;
using tools::ChildProcess;
using tools::ScreenWindow;
using tools::waitUntil;

constexpr std::chrono::seconds kTimeout{30};

class NotifierTest : public nativeutils_test::LoggedTest {
 protected:
  void SetUp() override {
    if (!SessionBus::isPossible()) GTEST_SKIP() << "no dbus-daemon here";
  }

  // Notifies a notifier that listens on the bus at `address` to close its workflow.
  void expectNotificationOn(const std::string& address) {
    ChildProcess::Setup setup;
    setup.command = {SVO_TEST_NOTIFIER, address, folder / "ready"};
    ChildProcess notifier(setup);
    ASSERT_TRUE(support::becomesTrue([&] { return std::filesystem::exists(folder / "ready"); }));
    EXPECT_TRUE(utilCloseAllNotificationWorkflows());
    ASSERT_TRUE(waitUntil([&] { return notifier.ended(); }, kTimeout));
    EXPECT_EQ(notifier.exitStatus(), 0);
    EXPECT_TRUE(logged().empty()) << "no process may be killed";
  }

  const support::SetRemover remover{"/tmp", 77445459};
  const support::TemporaryFolder folder;
};

TEST_F(NotifierTest, OfThisSessionGetsTheNotification) {
  const SessionBus bus(folder / "bus");
  const Variable session("DBUS_SESSION_BUS_ADDRESS", bus.address()), system("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no");
  expectNotificationOn(bus.address());
}

TEST_F(NotifierTest, IsFoundByTheUsersRuntimeFolder) {
  const Variable runtime("XDG_RUNTIME_DIR", folder.path()), session("DBUS_SESSION_BUS_ADDRESS", std::nullopt),
      system("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/no");
  const SessionBus bus(folder / "run");
  std::filesystem::create_symlink(folder / "run/socket", folder / "bus");
  expectNotificationOn(bus.address());
}

TEST_F(NotifierTest, OfAnotherSessionListensOnTheSystemBus) {
  const SessionBus sessionBus(folder / "session"), systemBus(folder / "system");
  const Variable session("DBUS_SESSION_BUS_ADDRESS", sessionBus.address()),
      system("DBUS_SYSTEM_BUS_ADDRESS", systemBus.address());
  expectNotificationOn(systemBus.address());
}

class RaiseTest : public nativeutils_test::LoggedTest {
 protected:
  void SetUp() override {
    if (!WindowManager::isPossible()) GTEST_SKIP() << "no openbox here";
    manager = std::make_unique<WindowManager>(screen, display.name(), folder / "openbox");
    other = std::make_unique<OtherWindow>(display.name(), tools::Area{50, 50, 300, 200});
    ASSERT_TRUE(waitUntil([&] { return manager->activeWindow() == other->id(); }, kTimeout));
  }

  void TearDown() override {
    for (const ScreenWindow& each : screen.windows())
      ::kill(each.pid, SIGTERM);
    EXPECT_TRUE(waitUntil([&] { return screen.windows().empty(); }, kTimeout));
  }

  // The window of the started program.
  ScreenWindow window() {
    EXPECT_TRUE(waitUntil([&] { return !screen.windows().empty(); }, kTimeout));
    return screen.windows().at(0);
  }

  const support::TemporaryFolder folder;
  const tools::VirtualDisplay display;
  const Variable shown{"DISPLAY", display.name()};
  tools::Screen screen{display.name()};
  std::unique_ptr<WindowManager> manager;
  std::unique_ptr<OtherWindow> other;
};

TEST_F(RaiseTest, AStartedProgramStaysBehindTheActiveWindow) {
  EXPECT_TRUE(utilCreateProcess(SVO_TEST_WINDOW, {}, false, nullptr));
  (void)window();
  EXPECT_EQ(manager->activeWindow(), other->id());
}

TEST_F(RaiseTest, ARaisedProgramBecomesActive) {
  EXPECT_TRUE(utilCreateProcess(SVO_TEST_WINDOW, {}, true, nullptr));
  const ScreenWindow started = window();
  EXPECT_TRUE(waitUntil([&] { return manager->activeWindow() == started.id; }, kTimeout));
  EXPECT_TRUE(waitUntil([&] { return manager->topmostWindow() == started.id; }, kTimeout));
  const std::string process = std::to_string(started.pid);
  EXPECT_THAT(logged(), testing::ElementsAre(StartsWith("DEBUG Launch Process at path "),
                                             "INFO Launch Process With Task ", "INFO Launching process .... " + process,
                                             "INFO Bring to front process .... " + process));
}

}  // namespace
}  // namespace endtoend
