// Foundation for the tests of the sign-in window.
//
// - GNUstep starts no daemons: they would outlive the test and use its home folder.
// - `URLWithString:` throws for nil, as on macOS.

#import <Foundation/Foundation.h>

#include "tests/macos/doubles/Methods.h"

namespace {

// The original connects to the notification daemon and starts it if it does not run.
void connectNothing(NSDistributedNotificationCenter*, SEL) {}

void launchNothing(NSTask*, SEL) {}

}  // namespace

@interface NSURL (Strict)
+ (id)strictURLWithString:(NSString*)text;
@end

@implementation NSURL (Strict)

// After the exchange in `load`, this name calls the original method.
+ (id)strictURLWithString:(NSString*)text {
  if (text == nil) [NSException raise:NSInvalidArgumentException format:@"nil string parameter"];
  return [self strictURLWithString:text];
}

@end

@interface FoundationReplacement : NSObject
@end

@implementation FoundationReplacement

+ (void)load {
  doubles::replaceMethod([NSDistributedNotificationCenter class], @selector(_connect), connectNothing, "v@:");
  doubles::replaceMethod([NSTask class], @selector(launch), launchNothing, "v@:");
  NSTask* const task = [[NSTask alloc] init];
  doubles::replaceMethod([task class], @selector(launch), launchNothing, "v@:");
  [task release];

  // objc_getClass does not initialize the class: it is too early for that.
  const Class url = objc_getClass("NSURL");
  method_exchangeImplementations(class_getClassMethod(url, @selector(URLWithString:)),
                                 class_getClassMethod(url, @selector(strictURLWithString:)));
}

@end
