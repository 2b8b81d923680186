// How a new process is brought to the front, by the clock of a run loop that takes no time.

#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "nativeutils/NativeUtils.h"
#include "tests/nativeutils/FakeDesktop.h"
#include "tests/nativeutils/NativeUtilsLog.h"
#include "tests/support/Child.h"

namespace {

using namespace std::chrono_literals;
using nativeutils_test::FakeDesktop;
using nativeutils_test::fakeDesktop;
using platform::RaiseResult;
using Lines = std::vector<std::string>;

class FrontingTest : public nativeutils_test::LoggedTest {
 protected:
  FrontingTest() { fakeDesktop = FakeDesktop{}; }
  void TearDown() override {
    EXPECT_TRUE(support::comesTrue([] { return !support::hasChildren(); }));
  }

  static void* mustNotRun(void*) {
    ADD_FAILURE() << "a watcher runs";
    return nullptr;
  }

  // Starts a program that must start, and gives what was logged.
  Lines start(const Lines& args = {}) {
    EXPECT_TRUE(utilCreateProcess("/bin/true", args, true, mustNotRun));
    return logged();
  }

  static std::string process() { return std::to_string(fakeDesktop.fronted.at(0)); }

  const Lines beginning = {"DEBUG Launch Process at path /bin/true", "INFO Launch Process With Task "};
  const std::string failed = "WARN Failed bring front... took much time to Launch Process /bin/true";

  Lines followedBy(const Lines& end) const {
    Lines all = beginning;
    all.insert(all.end(), end.begin(), end.end());
    return all;
  }
};

TEST_F(FrontingTest, AProcessThatIsThereIsBroughtToTheFrontAtOnce) {
  const Lines lines = start();
  EXPECT_EQ(lines,
            followedBy({"INFO Launching process .... " + process(), "INFO Bring to front process .... " + process()}));
  EXPECT_TRUE(fakeDesktop.turns.empty());
}

TEST_F(FrontingTest, AProcessIsAwaitedInTurnsOfATenthOfASecond) {
  fakeDesktop.unknownFor = 3;
  const Lines lines = start();
  EXPECT_EQ(lines.back(), "INFO Bring to front process .... " + process());
  EXPECT_EQ(fakeDesktop.turns, (std::vector<std::chrono::milliseconds>{100ms, 100ms, 100ms}));
}

TEST_F(FrontingTest, AProcessThatShowsUpAfterTenSecondsIsStillTaken) {
  fakeDesktop.unknownFor = 100;
  const Lines lines = start();
  EXPECT_EQ(lines.back(), "INFO Bring to front process .... " + process());
}

TEST_F(FrontingTest, AProcessThatDoesNotShowUpIsAWarningAfterTenSeconds) {
  fakeDesktop.unknownFor = 101;
  const Lines lines = start();
  EXPECT_EQ(lines, followedBy({"INFO Launching process .... " + process(), failed}));
  EXPECT_EQ(fakeDesktop.turns.size(), 100u);
}

TEST_F(FrontingTest, AProcessThatCannotBeBroughtToTheFrontIsAWarningAtOnce) {
  fakeDesktop.unknownFor = 1;
  fakeDesktop.fronting = RaiseResult::kFailed;
  const Lines lines = start();
  EXPECT_EQ(lines, followedBy({"INFO Launching process .... " + process(), failed}));
  EXPECT_EQ(fakeDesktop.turns.size(), 1u);
}

TEST_F(FrontingTest, WhatTheLauncherLaunchesIsNotStartedAgain) {
  fakeDesktop.canLaunch = true;
  EXPECT_EQ(start({"a b"}), (Lines{"DEBUG Launch Process at path /bin/true", "DEBUG Launch Process With Arg 0 : a b"}));
  EXPECT_EQ(fakeDesktop.launched, (Lines{"/bin/true", "a b"}));
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(FrontingTest, AFileThatTheLauncherCannotReferToIsAWarningAndStartedAsATask) {
  fakeDesktop.canLaunch = true;
  fakeDesktop.failureToRefer = platform::ReferenceFailure{"fnfErr", "File not found"};
  const Lines lines = start();
  EXPECT_EQ(lines, (Lines{beginning[0],
                          "WARN Launch Process get FSRef  ErrorString (fnfErr:File not found), For file /bin/true",
                          beginning[1], "INFO Launching process .... " + process(),
                          "INFO Bring to front process .... " + process()}));
  EXPECT_TRUE(fakeDesktop.launched.empty());
}

TEST_F(FrontingTest, WhatCannotBeStartedIsNotAwaited) {
  EXPECT_FALSE(utilCreateProcess("/bin", {}, true, mustNotRun));
  EXPECT_TRUE(fakeDesktop.fronted.empty());
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path /bin", "INFO Launch Process With Task "}));
}

}  // namespace
