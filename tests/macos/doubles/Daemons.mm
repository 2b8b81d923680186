// Keeps the free implementation from starting programs of its own: they would outlive the test, and know its home.

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

@interface NoDaemons : NSObject
+ (void)replace:(SEL)method of:(Class)owner;
@end

@implementation NoDaemons

// Instead of connecting to the notification daemon, which is started when there is none.
- (void)_connect {
}

- (void)launch {
}

+ (void)load {
  [self replace:@selector(_connect) of:[NSDistributedNotificationCenter class]];
  [self replace:@selector(launch) of:[NSTask class]];
  NSTask* const task = [[NSTask alloc] init];
  [self replace:@selector(launch) of:[task class]];
  [task release];
}

+ (void)replace:(SEL)method of:(Class)owner {
  const Method mine = class_getInstanceMethod(self, method);
  class_replaceMethod(owner, method, method_getImplementation(mine), method_getTypeEncoding(mine));
}

@end
