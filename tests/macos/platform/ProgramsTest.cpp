// Programs and the running one, through the library's functions and with what they log.

#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdint>
#include <future>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/macos/doubles/MainBundle.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Not;
using testing::StartsWith;

class ProgramsTest : public nativeutils_test::LoggedTest {
 protected:
  ProgramsTest() {
    doubles::forgetCalls();
    doubles::mainBundle = {};
  }
  void TearDown() override {
    EXPECT_TRUE(support::comesTrue([] { return !support::hasChildren() && doubles::unsettled().empty(); }));
  }

  static void* mustNotRun(void*) {
    ADD_FAILURE() << "a watcher runs";
    return nullptr;
  }

  static bool startInFront() { return utilCreateProcess("/bin/true", {"a b"}, true, mustNotRun); }

  // Starts it as a task, which then is in front.
  void expectTask(const std::vector<std::string>& warnings = {}) const {
    EXPECT_TRUE(startInFront());
    const std::vector<std::string> calls = doubles::takenCalls();
    EXPECT_THAT(calls, Contains("launch /bin/true <a b>"));
    const auto front = std::find_if(calls.begin(), calls.end(),
                                    [](const std::string& call) { return call.rfind("SetFrontProcess 0,", 0) == 0; });
    ASSERT_NE(front, calls.end());
    const std::string number = front->substr(front->find(',') + 1);
    std::vector<std::string> messages{"DEBUG Launch Process at path /bin/true",
                                      "DEBUG Launch Process With Arg 0 : a b"};
    messages.insert(messages.end(), warnings.begin(), warnings.end());
    messages.insert(messages.end(), {"INFO Launch Process With Task ", "INFO Launching process .... " + number,
                                     "INFO Bring to front process .... " + number});
    EXPECT_EQ(logged(), messages);
  }
};

TEST_F(ProgramsTest, WhatTheLauncherStartsIsNoTask) {
  EXPECT_TRUE(startInFront());
  EXPECT_THAT(logged(), ElementsAre("DEBUG Launch Process at path /bin/true", "DEBUG Launch Process With Arg 0 : a b"));
  EXPECT_THAT(doubles::takenCalls(), Not(Contains(StartsWith("launch "))));
}

TEST_F(ProgramsTest, AFileWithoutAReferenceIsAWarningAndATask) {
  doubles::failCall("FSPathMakeRef", -43);
  expectTask({"WARN Launch Process get FSRef  ErrorString (fnfErr:File not found), For file /bin/true"});
}

TEST_F(ProgramsTest, WithoutAnEventTheFileIsNotAskedForAndATaskStarted) {
  doubles::failCall("FSPathMakeRef", -43);
  doubles::failCall("AECreateDesc", -108);
  expectTask();
  doubles::failCall("AECreateDesc", 0);
  doubles::failCall("AECreateAppleEvent", -108);
  forget();
  expectTask();
}

TEST_F(ProgramsTest, WhatTheLauncherRefusesIsATask) {
  doubles::failCall("LSOpenApplication", -10810);
  expectTask();
}

TEST_F(ProgramsTest, ATaskThatMayNotBeInFrontIsAWarning) {
  doubles::failCall("LSOpenApplication", -10810);
  doubles::failCall("SetFrontProcess", -606);
  EXPECT_TRUE(startInFront());
  EXPECT_EQ(logged().back(), "WARN Failed bring front... took much time to Launch Process /bin/true");
}

TEST_F(ProgramsTest, AWatcherIsGivenTheNumberOfTheTask) {
  static std::promise<pid_t> given;
  given = {};
  const support::TemporaryFolder folder;
  const auto watcher = [](void* number) -> void* {
    ::pthread_detach(::pthread_self());
    given.set_value(static_cast<pid_t>(reinterpret_cast<std::intptr_t>(number)));
    return nullptr;
  };
  EXPECT_TRUE(utilCreateProcess("/bin/sh", {"-c", "echo $$ >\"$0\"", folder / "number"}, false, watcher));
  const std::string number = std::to_string(given.get_future().get());
  EXPECT_TRUE(support::comesTrue([&] { return support::contentsOf(folder / "number") == number + "\n"; }));
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("launchedTaskWithLaunchPath:arguments:", StartsWith("launch /bin/sh <-c> <echo ")));
}

TEST_F(ProgramsTest, AnApplicationIsATaskWithoutArgumentsAndWithoutAMessage) {
  EXPECT_TRUE(utilLaunchApplication("/bin/true"));
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("launchedTaskWithLaunchPath:arguments:", "launch /bin/true"));
  EXPECT_TRUE(logged().empty());
}

TEST_F(ProgramsTest, ATaskObjectThatCannotBeMadeIsAnError) {
  doubles::failCall("NSTask init", 1);
  unsigned long status = 4711, returnCode = 4711;
  EXPECT_FALSE(utilCreateProcessWithReturnCode("/bin/true", {}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, 4711u);
  EXPECT_THAT(logged(), ElementsAre("DEBUG Launch Process at path /bin/true", "INFO Launch Process With Task ",
                                    "ERROR Launch Process With Task "));
}

TEST_F(ProgramsTest, ASilentTaskIsInTheProgramsFolderAndAnEndComesWithItsSign) {
  unsigned long status = 4711, returnCode = 4711;
  EXPECT_TRUE(utilCreateProcessWithReturnCode("/bin/sh", {"-c", "exit 3"}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, 3u);
  EXPECT_EQ(status, 4711u);
  EXPECT_THAT(doubles::takenCalls(),
              ElementsAre("launch /bin/sh <-c> <exit 3> in /bin output null errors null", "waitUntilExit"));
  doubles::failCall("waitUntilExit", 1);
  EXPECT_TRUE(utilCreateProcessWithReturnCode("/bin/true", {}, status, true, returnCode, false));
  EXPECT_EQ(returnCode, ~0ul);
}

TEST_F(ProgramsTest, AnAddressGoesToTheWorkspace) {
  EXPECT_TRUE(utilOpenURL("https://h/a"));
  EXPECT_FALSE(utilOpenURL("nobody-such:a"));
  EXPECT_TRUE(logged().empty());
}

TEST_F(ProgramsTest, AnApplicationIsNamedByItsBundleAndLiesBesideIt) {
  doubles::mainBundle.path = "/Applications/Tool.app";
  doubles::mainBundle.executable = "/Applications/Tool.app/Contents/MacOS/tool";
  std::string name, path;
  EXPECT_TRUE(utilGetApplicationName(name));
  EXPECT_EQ(name, "Tool.app");
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/Applications");
}

TEST_F(ProgramsTest, APlainProgramIsNamedByItself) {
  doubles::mainBundle.path = "/usr/local/bin";
  doubles::mainBundle.executable = "/usr/local/bin/tool";
  std::string name, path;
  EXPECT_TRUE(utilGetApplicationName(name));
  EXPECT_EQ(name, "tool");
  EXPECT_TRUE(utilGetSelfPath(path));
  EXPECT_EQ(path, "/usr/local/bin");
}

TEST_F(ProgramsTest, ABundleWithoutAPathIsNowhere) {
  doubles::failCall("bundlePath", 1);
  std::string path = "unchanged";
  EXPECT_FALSE(utilGetSelfPath(path));
  EXPECT_EQ(path, "unchanged");
}

TEST_F(ProgramsTest, OneArchitectureOf64BitsIsEnough) {
  for (const long one : {0x1000007L, 0x1000012L}) {
    doubles::mainBundle.architectures = {0x7, 0x12, one};
    EXPECT_TRUE(utilIs64Bit()) << one;
  }
  doubles::mainBundle.architectures = {0x7, 0x12, 0x100000C};
  EXPECT_FALSE(utilIs64Bit());
  doubles::mainBundle.architectures = {};
  EXPECT_FALSE(utilIs64Bit());
}

TEST_F(ProgramsTest, APoolIsOneOfFoundations) {
  void* const pool = utilGetPool();
  ASSERT_NE(pool, nullptr);
  utilReleasePool(pool);
}

}  // namespace
