// Raising the window of a started program. The run loop is a fake whose time advances without waiting.

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

class RaiseWindowTest : public nativeutils_test::LoggedTest {
 protected:
  RaiseWindowTest() { fakeDesktop = FakeDesktop{}; }

  void TearDown() override {
    EXPECT_TRUE(support::becomesTrue([] { return !support::hasChildren(); }));
  }

  static void* mustNotRun(void*) {
    ADD_FAILURE() << "the watcher was started";
    return nullptr;
  }

  // Starts a program, which must succeed. Returns what was logged.
  Lines start(const Lines& args = {}) {
    EXPECT_TRUE(utilCreateProcess("/bin/true", args, true, mustNotRun));
    return logged();
  }

  static std::string processId() { return std::to_string(fakeDesktop.requests.at(0)); }

  const Lines startLines = {"DEBUG Launch Process at path /bin/true", "INFO Launch Process With Task "};
  const std::string warning = "WARN Failed bring front... took much time to Launch Process /bin/true";

  Lines startLinesAnd(const Lines& end) const {
    Lines all = startLines;
    all.insert(all.end(), end.begin(), end.end());
    return all;
  }
};

TEST_F(RaiseWindowTest, RaisesAnExistingWindowAtOnce) {
  const Lines lines = start();
  EXPECT_EQ(lines, startLinesAnd({"INFO Launching process .... " + processId(),
                                  "INFO Bring to front process .... " + processId()}));
  EXPECT_TRUE(fakeDesktop.intervals.empty());
}

TEST_F(RaiseWindowTest, WaitsInIntervalsOf100Milliseconds) {
  fakeDesktop.unknownCount = 3;
  const Lines lines = start();
  EXPECT_EQ(lines.back(), "INFO Bring to front process .... " + processId());
  EXPECT_EQ(fakeDesktop.intervals, (std::vector<std::chrono::milliseconds>{100ms, 100ms, 100ms}));
}

TEST_F(RaiseWindowTest, RaisesAWindowThatAppearsAfterTenSeconds) {
  fakeDesktop.unknownCount = 100;
  const Lines lines = start();
  EXPECT_EQ(lines.back(), "INFO Bring to front process .... " + processId());
}

TEST_F(RaiseWindowTest, WarnsAfterTenSecondsWithoutAWindow) {
  fakeDesktop.unknownCount = 101;
  const Lines lines = start();
  EXPECT_EQ(lines, startLinesAnd({"INFO Launching process .... " + processId(), warning}));
  EXPECT_EQ(fakeDesktop.intervals.size(), 100u);
}

TEST_F(RaiseWindowTest, WarnsAtOnceIfRaisingIsImpossible) {
  fakeDesktop.unknownCount = 1;
  fakeDesktop.result = RaiseResult::kFailed;
  const Lines lines = start();
  EXPECT_EQ(lines, startLinesAnd({"INFO Launching process .... " + processId(), warning}));
  EXPECT_EQ(fakeDesktop.intervals.size(), 1u);
}

TEST_F(RaiseWindowTest, StartsNoProcessAfterALaunch) {
  fakeDesktop.canLaunch = true;
  EXPECT_EQ(start({"a b"}), (Lines{"DEBUG Launch Process at path /bin/true", "DEBUG Launch Process With Arg 0 : a b"}));
  EXPECT_EQ(fakeDesktop.launched, (Lines{"/bin/true", "a b"}));
  EXPECT_FALSE(support::hasChildren());
}

TEST_F(RaiseWindowTest, StartsAProcessIfTheLauncherFails) {
  fakeDesktop.canLaunch = true;
  fakeDesktop.referenceFailure = platform::ReferenceFailure{"fnfErr", "File not found"};
  const Lines lines = start();
  EXPECT_EQ(lines, (Lines{startLines[0],
                          "WARN Launch Process get FSRef  ErrorString (fnfErr:File not found), For file /bin/true",
                          startLines[1], "INFO Launching process .... " + processId(),
                          "INFO Bring to front process .... " + processId()}));
  EXPECT_TRUE(fakeDesktop.launched.empty());
}

TEST_F(RaiseWindowTest, DoesNotWaitIfTheStartFails) {
  EXPECT_FALSE(utilCreateProcess("/bin", {}, true, mustNotRun));
  EXPECT_TRUE(fakeDesktop.requests.empty());
  EXPECT_EQ(logged(), (Lines{"DEBUG Launch Process at path /bin", "INFO Launch Process With Task "}));
}

}  // namespace
