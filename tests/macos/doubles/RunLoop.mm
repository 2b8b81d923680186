// A run loop that returns at once, as on a Mac when there is nothing that it could wait for. The implementation's own
// then waits in vain, so a test has to ask for it: `failCall("runUntilDate:", 1)`. It keeps to itself what a handler
// throws, too; with 2 a handler's exception comes out.

#import <Foundation/Foundation.h>

#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Uncounted.h"

namespace {

void (*theirRun)(NSRunLoop*, SEL, NSDate*);

void run(NSRunLoop* self, SEL method, NSDate* end) {
  const int status = doubles::statusOf("runUntilDate:");
  if (status == 0) theirRun(self, method, end);
  if (status == 2) [NSException raise:NSGenericException format:@"of a handler"];
}

}  // namespace

@interface RunLoopAsOnAMac : NSObject
@end

@implementation RunLoopAsOnAMac

+ (void)load {
  const doubles::Uncounted uncounted;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  theirRun = doubles::replaceIn([NSRunLoop class], @selector(runUntilDate:), run, "v@:@");
  [pool release];
}

@end
