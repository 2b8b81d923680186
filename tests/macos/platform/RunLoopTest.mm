#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <atomic>
#include <thread>

#include "tests/macos/platform/PlatformTest.h"

namespace {

std::atomic<int> timersFired{0};

}  // namespace

@interface TimerTarget : NSObject
- (void)fire:(NSTimer*)timer;
@end

@implementation TimerTarget

- (void)fire:(NSTimer*)timer {
  (void)timer;
  ++timersFired;
}

@end

namespace {

using namespace std::chrono_literals;

class RunLoopTest : public macos_test::PlatformTest {
 protected:
  RunLoopTest() { timersFired = 0; }

  // Runs the loop. Returns how long that took.
  static auto timeOf(std::chrono::milliseconds duration) {
    const auto start = platform::runLoopTime();
    platform::runLoopFor(duration);
    return platform::runLoopTime() - start;
  }

  // Adds a timer that is already due: on a busy machine, a later one could miss the end of the run.
  static void addDueTimer() {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    TimerTarget* const target = [[[TimerTarget alloc] init] autorelease];
    NSTimer* const timer = [[[NSTimer alloc] initWithFireDate:[NSDate distantPast]
                                                     interval:0
                                                       target:target
                                                     selector:@selector(fire:)
                                                     userInfo:nil
                                                      repeats:NO] autorelease];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    [pool release];
  }
};

TEST_F(RunLoopTest, RunsForTheWholeTimeWithoutSources) {
  doubles::failCall("runUntilDate:", 1);
  EXPECT_GE(timeOf(50ms), 50ms);
  doubles::failCall("runUntilDate:", 0);
  std::thread([] { EXPECT_GE(timeOf(50ms), 50ms); }).join();
}

TEST_F(RunLoopTest, RunsForTheWholeTimeAfterAnEvent) {
  addDueTimer();
  EXPECT_GE(timeOf(60ms), 60ms);
  EXPECT_EQ(timersFired, 1);
}

TEST_F(RunLoopTest, CatchesTheExceptionOfAHandler) {
  doubles::failCall("runUntilDate:", 2);
  EXPECT_GE(timeOf(30ms), 30ms);
}

TEST_F(RunLoopTest, IgnoresTheEventsOfOtherThreads) {
  addDueTimer();
  std::thread([] { timeOf(30ms); }).join();
  EXPECT_EQ(timersFired, 0);
  timeOf(10ms);
  EXPECT_EQ(timersFired, 1);
}

TEST_F(RunLoopTest, ReturnsAtOnceForNoTime) {
  EXPECT_LT(timeOf(0ms), 10s);
}

}  // namespace
