#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <thread>

namespace platform {

void runLoopFor(std::chrono::milliseconds duration) {
  const auto end = runLoopTime() + duration;
  {
    const AutoreleaseScope scope;
    const std::chrono::duration<NSTimeInterval> seconds = duration;
    NSDate* const over = [NSDate dateWithTimeIntervalSinceNow:seconds.count()];
    @try {
      [[NSRunLoop currentRunLoop] runUntilDate:over];
    } @catch (...) {
      // Of an event's handler, which knows nothing of who waits here.
    }
  }
  // A run loop with nothing to wait for returns at once, and one that was thrown out of before its time.
  std::this_thread::sleep_until(end);
}

void* openAutoreleasePool() {
  return [[NSAutoreleasePool alloc] init];
}

void closeAutoreleasePool(void* pool) {
  [static_cast<NSAutoreleasePool*>(pool) release];
}

}  // namespace platform
