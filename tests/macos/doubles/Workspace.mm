// A workspace that starts no program. It has one for the addresses that every Mac has one for.

#import <Cocoa/Cocoa.h>

#include <string>

#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Uncounted.h"

@interface WorkspaceAsOnAMac : NSObject
- (BOOL)openURL:(NSURL*)url;
@end

@implementation WorkspaceAsOnAMac

- (BOOL)openURL:(NSURL*)url {
  doubles::noteCall(std::string("openURL: ") + [[url absoluteString] UTF8String]);
  if (doubles::statusOf("openURL:") != 0) return NO;
  NSArray* const known = [NSArray arrayWithObjects:@"http", @"https", @"mailto", @"file", nil];
  return [known containsObject:[[url scheme] lowercaseString]];
}

@end

namespace {

id sharedWorkspace(Class, SEL) {
  static WorkspaceAsOnAMac* const shared = [[WorkspaceAsOnAMac alloc] init];
  doubles::noteCall("sharedWorkspace");
  return shared;
}

void launchNothing(NSTask*, SEL) {}

}  // namespace

@interface WorkspaceReplacement : NSObject
@end

@implementation WorkspaceReplacement

// The class, when it is set up, starts a program that looks for services; the program would outlive the test.
+ (void)load {
  const doubles::Uncounted uncounted;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  NSTask* const any = [[NSTask alloc] init];
  const auto launch = doubles::replaceIn([any class], @selector(launch), launchNothing, "v@:");
  const Class workspace = [NSWorkspace class];
  doubles::replaceIn([any class], @selector(launch), launch, "v@:");
  [any release];
  doubles::replaceOf(workspace, @selector(sharedWorkspace), sharedWorkspace, "@@:");
  [pool release];
}

@end
