// The workspace and the distributed notification center. Both start no process.

#include "tests/macos/doubles/Desktop.h"

#import <Cocoa/Cocoa.h>

#include "tests/macos/doubles/DisabledLeakCheck.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemDoubles.h"

// Has a program for the schemes that every Mac has a program for.
@interface MacWorkspace : NSObject
- (BOOL)openURL:(NSURL*)url;
@end

@implementation MacWorkspace

- (BOOL)openURL:(NSURL*)url {
  doubles::desktop.openedUrl = [[url absoluteString] UTF8String];
  if (doubles::statusOf("openURL:") != 0) return NO;
  NSArray* const schemes = [NSArray arrayWithObjects:@"http", @"https", @"mailto", @"file", nil];
  return [schemes containsObject:[[url scheme] lowercaseString]];
}

@end

@implementation NSDistributedNotificationCenter (Options)

- (void)postNotificationName:(NSString*)name
                      object:(NSString*)object
                    userInfo:(NSDictionary*)userInfo
                     options:(NSDistributedNotificationOptions)options {
  doubles::desktop.notification = doubles::Notification{[name UTF8String],
                                                        [object UTF8String],
                                                        userInfo != nil,
                                                        (options & NSDistributedNotificationPostToAllSessions) != 0};
}

@end

namespace {

id (*originalDefaultCenter)(Class, SEL);

id defaultCenter(Class self, SEL method) {
  return doubles::statusOf("defaultCenter") == 0 ? originalDefaultCenter(self, method) : nil;
}

// The original connects to the notification daemon and starts it if it does not run.
void connectNothing(NSDistributedNotificationCenter*, SEL) {}

id sharedWorkspace(Class, SEL) {
  static MacWorkspace* const shared = [[MacWorkspace alloc] init];
  return shared;
}

void launchNothing(NSTask*, SEL) {}

// NSWorkspace starts a program that looks for services when it is initialized. That program would outlive the test.
Class initializedWorkspaceClass() {
  NSTask* const task = [[[NSTask alloc] init] autorelease];
  const auto launch = doubles::replaceMethod([task class], @selector(launch), launchNothing, "v@:");
  const Class workspace = [NSWorkspace class];
  doubles::replaceMethod([task class], @selector(launch), launch, "v@:");
  return workspace;
}

}  // namespace

@interface DesktopReplacement : NSObject
@end

@implementation DesktopReplacement

+ (void)load {
  const doubles::DisabledLeakCheck scope;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  const Class center = [NSDistributedNotificationCenter class];
  originalDefaultCenter = doubles::replaceClassMethod(center, @selector(defaultCenter), defaultCenter, "@@:");
  doubles::replaceMethod(center, @selector(_connect), connectNothing, "v@:");
  doubles::replaceClassMethod(initializedWorkspaceClass(), @selector(sharedWorkspace), sharedWorkspace, "@@:");
  [pool release];
}

@end
