#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <thread>

#include "tests/macos/platform/SystemTest.h"

@interface Ticker : NSObject
- (void)tick:(NSTimer*)timer;
@end

@implementation Ticker

- (void)tick:(NSTimer*)timer {
  (void)timer;
  doubles::noteCall("tick");
}

@end

namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class RunLoopTest : public macos_test::SystemTest {
 protected:
  // Runs the loop, and how long that took.
  static auto timeOf(std::chrono::milliseconds duration) {
    const auto start = platform::runLoopTime();
    platform::runLoopFor(duration);
    return platform::runLoopTime() - start;
  }

  // An event that is due: one that comes later comes too late when the machine is busy until the loop's time is over.
  static void letTick() {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    Ticker* const ticker = [[[Ticker alloc] init] autorelease];
    NSTimer* const timer = [[[NSTimer alloc] initWithFireDate:[NSDate distantPast]
                                                     interval:0
                                                       target:ticker
                                                     selector:@selector(tick:)
                                                     userInfo:nil
                                                      repeats:NO] autorelease];
    [[NSRunLoop currentRunLoop] addTimer:timer forMode:NSDefaultRunLoopMode];
    [pool release];
  }
};

TEST_F(RunLoopTest, TheTimePassesWithoutAnythingToWaitFor) {
  doubles::failCall("runUntilDate:", 1);
  EXPECT_GE(timeOf(50ms), 50ms);
  doubles::failCall("runUntilDate:", 0);
  std::thread([] { EXPECT_GE(timeOf(50ms), 50ms); }).join();
}

TEST_F(RunLoopTest, EventsAreServedMeanwhileAndTheTimePassesAllTheSame) {
  letTick();
  EXPECT_GE(timeOf(60ms), 60ms);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("tick"));
}

TEST_F(RunLoopTest, WhatAHandlerThrowsStaysInsideAndTheTimePasses) {
  doubles::failCall("runUntilDate:", 2);
  EXPECT_GE(timeOf(30ms), 30ms);
}

TEST_F(RunLoopTest, EventsOfAnotherThreadAreNotServed) {
  letTick();
  std::thread([] { timeOf(30ms); }).join();
  EXPECT_THAT(doubles::takenCalls(), IsEmpty());
  timeOf(10ms);
  EXPECT_THAT(doubles::takenCalls(), ElementsAre("tick"));
}

TEST_F(RunLoopTest, NoTimeIsATurnOfTheLoop) {
  EXPECT_LT(timeOf(0ms), 10s);
}

}  // namespace
