// GNUstep's Foundation and the declarations that it lacks.

#pragma once

#include_next <Foundation/Foundation.h>

using NSDistributedNotificationOptions = NSUInteger;
enum : NSDistributedNotificationOptions {
  NSDistributedNotificationDeliverImmediately = 1UL << 0,
  NSDistributedNotificationPostToAllSessions = 1UL << 1,
};

@interface NSDistributedNotificationCenter (Options)
- (void)postNotificationName:(NSString*)name
                      object:(NSString*)object
                    userInfo:(NSDictionary*)userInfo
                     options:(NSDistributedNotificationOptions)options;
@end
