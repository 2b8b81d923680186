// A centre for notifications to other processes that tells nobody, and starts no program to do it.

#import <Foundation/Foundation.h>

#include <string>

#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Uncounted.h"

@implementation NSDistributedNotificationCenter (Options)

- (void)postNotificationName:(NSString*)name
                      object:(NSString*)object
                    userInfo:(NSDictionary*)userInfo
                     options:(NSDistributedNotificationOptions)options {
  doubles::noteCall(std::string("postNotificationName: ") + [name UTF8String] + " object: " + [object UTF8String] +
                    " userInfo: " + (userInfo == nil ? "nil" : "some") + " options: " + std::to_string(options));
}

@end

namespace {

id (*theirDefaultCenter)(Class, SEL);

id defaultCenter(Class self, SEL method) {
  return doubles::statusOf("defaultCenter") == 0 ? theirDefaultCenter(self, method) : nil;
}

// Instead of connecting to the notification daemon, which is started when there is none.
void connectNobody(NSDistributedNotificationCenter*, SEL) {}

}  // namespace

@interface CentreAsOnAMac : NSObject
@end

@implementation CentreAsOnAMac

+ (void)load {
  const doubles::Uncounted uncounted;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  const Class centre = [NSDistributedNotificationCenter class];
  theirDefaultCenter = doubles::replaceOf(centre, @selector(defaultCenter), defaultCenter, "@@:");
  doubles::replaceIn(centre, @selector(_connect), connectNobody, "v@:");
  [pool release];
}

@end
