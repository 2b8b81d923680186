#include "platform/RunLoop.h"

#import <Foundation/Foundation.h>

#include <thread>

#include "platform/AutoreleasePool.h"

namespace platform {

void runLoopFor(std::chrono::milliseconds duration) {
  const auto end = runLoopTime() + duration;
  {
    const AutoreleaseScope scope;
    const std::chrono::duration<NSTimeInterval> seconds = duration;
    [[NSRunLoop currentRunLoop] runUntilDate:[NSDate dateWithTimeIntervalSinceNow:seconds.count()]];
  }
  // A run loop with nothing to wait for returns at once.
  std::this_thread::sleep_until(end);
}

}  // namespace platform
