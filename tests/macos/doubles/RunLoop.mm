// `runUntilDate:` as on macOS.
//
// - `failCall("runUntilDate:", 1)`: returns at once, as on macOS if the run loop has no source and no timer. GNUstep
//   waits until the date.
// - `failCall("runUntilDate:", 2)`: throws, as on macOS if an event handler throws. GNUstep catches the exception.

#import <Foundation/Foundation.h>

#include "tests/macos/doubles/DisabledLeakCheck.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemDoubles.h"

namespace {

void (*originalRun)(NSRunLoop*, SEL, NSDate*);

void run(NSRunLoop* self, SEL method, NSDate* end) {
  const int status = doubles::statusOf("runUntilDate:");
  if (status == 0) originalRun(self, method, end);
  if (status == 2) [NSException raise:NSGenericException format:@"thrown by an event handler"];
}

}  // namespace

@interface RunLoopReplacement : NSObject
@end

@implementation RunLoopReplacement

+ (void)load {
  const doubles::DisabledLeakCheck scope;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  originalRun = doubles::replaceMethod([NSRunLoop class], @selector(runUntilDate:), run, "v@:@");
  [pool release];
}

@end
