// The library's functions that start programs, and those about the running program.

#include <pthread.h>
#include <sys/stat.h>

#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/macos/doubles/Desktop.h"
#include "tests/macos/doubles/MainBundle.h"
#include "tests/macos/platform/PlatformTest.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using testing::ElementsAre;

class ProgramsTest : public nativeutils_test::LoggedTest {
 protected:
  ProgramsTest() {
    doubles::reset();
    doubles::mainBundle = {};
    doubles::desktop = {};
  }
  void TearDown() override { EXPECT_TRUE(macos_test::waitForTasks()); }

  static void* unexpectedWatcher(void*) {
    ADD_FAILURE() << "the watcher runs";
    return nullptr;
  }

  static bool startInFront() { return utilCreateProcess("/bin/true", {"a b"}, true, unexpectedWatcher); }

  // Starts a program as a task instead of through the launcher, and checks the log.
  void expectTask(const std::vector<std::string>& warnings = {}) const {
    EXPECT_TRUE(startInFront());
    ASSERT_TRUE(doubles::desktop.frontProcess);
    const std::string process = std::to_string(*doubles::desktop.frontProcess);
    std::vector<std::string> messages{"DEBUG Launch Process at path /bin/true",
                                      "DEBUG Launch Process With Arg 0 : a b"};
    messages.insert(messages.end(), warnings.begin(), warnings.end());
    messages.insert(messages.end(), {"INFO Launch Process With Task ", "INFO Launching process .... " + process,
                                     "INFO Bring to front process .... " + process});
    EXPECT_EQ(logged(), messages);
  }
};

TEST_F(ProgramsTest, TheLauncherStartsNoTask) {
  EXPECT_TRUE(startInFront());
  EXPECT_THAT(logged(), ElementsAre("DEBUG Launch Process at path /bin/true", "DEBUG Launch Process With Arg 0 : a b"));
  EXPECT_FALSE(doubles::desktop.frontProcess);
}

TEST_F(ProgramsTest, AFileWithoutAReferenceIsATask) {
  doubles::failCall("FSPathMakeRef", -43);
  expectTask({"WARN Launch Process get FSRef  ErrorString (fnfErr:File not found), For file /bin/true"});
}

TEST_F(ProgramsTest, WithoutAnActivationEventATaskIsStarted) {
  doubles::failCall("FSPathMakeRef", -43);
  for (const char* call : {"AECreateDesc", "AECreateAppleEvent"}) {
    doubles::failNextCall(call, -108);
    forget();
    expectTask();
  }
}

TEST_F(ProgramsTest, ARefusedLaunchIsATask) {
  doubles::failCall("LSOpenApplication", -10810);
  expectTask();
}

TEST_F(ProgramsTest, AFailureToRaiseATaskIsLogged) {
  doubles::failCall("LSOpenApplication", -10810);
  doubles::failCall("SetFrontProcess", -606);
  EXPECT_TRUE(startInFront());
  EXPECT_EQ(logged().back(), "WARN Failed bring front... took much time to Launch Process /bin/true");
}

TEST_F(ProgramsTest, TheWatcherReceivesTheProcessId) {
  static std::promise<pid_t> received;
  received = {};
  const support::TemporaryFolder folder;
  const auto watcher = [](void* process) -> void* {
    ::pthread_detach(::pthread_self());
    received.set_value(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(process)));
    return nullptr;
  };
  EXPECT_TRUE(utilCreateProcess("/bin/sh", {"-c", "echo $$ >\"$0\"", folder / "number"}, false, watcher));
  const std::string number = std::to_string(received.get_future().get());
  EXPECT_TRUE(support::becomesTrue([&] { return support::contentsOf(folder / "number") == number + "\n"; }));
}

TEST_F(ProgramsTest, FailsIfOutOfMemoryForATask) {
  doubles::failCall("NSTask init");
  unsigned long status = 4711, returnCode = 4711;
  EXPECT_FALSE(utilCreateProcessWithReturnCode("/bin/true", {}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, 4711u);
  EXPECT_THAT(logged(), ElementsAre("DEBUG Launch Process at path /bin/true", "INFO Launch Process With Task ",
                                    "ERROR Launch Process With Task "));
}

TEST_F(ProgramsTest, TheExitStatusIsMinusOneIfUnknown) {
  unsigned long status = 4711, returnCode = 4711;
  EXPECT_TRUE(utilCreateProcessWithReturnCode("/bin/sh", {"-c", "exit 3"}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, 3u);
  EXPECT_EQ(status, 4711u);
  doubles::failCall("waitUntilExit");
  EXPECT_TRUE(utilCreateProcessWithReturnCode("/bin/true", {}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, ~0ul);
}

TEST_F(ProgramsTest, AUrlIsOpenedInTheWorkspace) {
  EXPECT_TRUE(utilOpenURL("https://h/a"));
  EXPECT_EQ(doubles::desktop.openedUrl, "https://h/a");
  EXPECT_FALSE(utilOpenURL("unknown-scheme:a"));
  EXPECT_TRUE(logged().empty());
}

TEST_F(ProgramsTest, AnApplicationHasTheNameOfItsBundle) {
  doubles::mainBundle.path = "/Applications/Tool.app";
  doubles::mainBundle.executable = "/Applications/Tool.app/Contents/MacOS/tool";
  std::string name, path;
  EXPECT_TRUE(utilGetApplicationName(name));
  EXPECT_EQ(name, "Tool.app");
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/Applications");
}

TEST_F(ProgramsTest, AProgramHasTheNameOfItsExecutable) {
  doubles::mainBundle.path = "/usr/local/bin";
  doubles::mainBundle.executable = "/usr/local/bin/tool";
  std::string name, path;
  EXPECT_TRUE(utilGetApplicationName(name));
  EXPECT_EQ(name, "tool");
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/usr/local/bin");
}

TEST_F(ProgramsTest, ABundleWithoutAPathIsAFailure) {
  doubles::failCall("bundlePath");
  std::string path = "unchanged";
  EXPECT_FALSE(utilGetSelfPath(path));
  EXPECT_EQ(path, "unchanged");
}

TEST_F(ProgramsTest, One64BitArchitectureIsEnough) {
  for (const long architecture : {0x1000007L, 0x1000012L}) {
    doubles::mainBundle.architectures = {0x7, 0x12, architecture};
    EXPECT_TRUE(utilIs64Bit()) << architecture;
  }
  doubles::mainBundle.architectures = {0x7, 0x12, 0x100000C};
  EXPECT_FALSE(utilIs64Bit());
  doubles::mainBundle.architectures = {};
  EXPECT_FALSE(utilIs64Bit());
}

TEST_F(ProgramsTest, APoolIsCreatedAndReleased) {
  void* const pool = utilGetPool();
  ASSERT_NE(pool, nullptr);
  utilReleasePool(pool);
}

}  // namespace
