#include "platform/EventLoop.h"

#import <Foundation/Foundation.h>

#include <thread>

namespace platform {

void runLoopFor(std::chrono::milliseconds duration) {
  const auto end = runLoopTime() + duration;
  {
    const AutoreleaseScope scope;
    const std::chrono::duration<NSTimeInterval> seconds = duration;
    NSDate* const limit = [NSDate dateWithTimeIntervalSinceNow:seconds.count()];
    @try {
      [[NSRunLoop currentRunLoop] runUntilDate:limit];
    } @catch (...) {
      // An exception of an event handler does not concern the caller.
    }
  }
  // A run loop returns early if it has no sources or an event handler throws.
  std::this_thread::sleep_until(end);
}

void* openAutoreleasePool() {
  return [[NSAutoreleasePool alloc] init];
}

void closeAutoreleasePool(void* pool) {
  [static_cast<NSAutoreleasePool*>(pool) release];
}

}  // namespace platform
