// What the process is told of its arguments, when the environment asks for something else than the truth.
//   SVO_TEST_ARGUMENTS=none     nothing at all
//   SVO_TEST_ARGUMENTS=endless  more than there is memory for

#import <Foundation/Foundation.h>
#import <objc/runtime.h>

#include <cstdlib>
#include <string_view>

@interface EndlessArray : NSArray
@end

@implementation EndlessArray

- (NSUInteger)count {
  return NSUInteger{1} << 55;
}

- (id)objectAtIndex:(NSUInteger)index {
  (void)index;
  return @"--pipeName=";
}

@end

@interface Arguments : NSObject
@end

@implementation Arguments

- (NSArray*)none {
  return nil;
}

- (NSArray*)endless {
  return [[[EndlessArray alloc] init] autorelease];
}

+ (void)load {
  const char* const wish = std::getenv("SVO_TEST_ARGUMENTS");
  const bool none = wish != nullptr && std::string_view(wish) == "none";
  const bool endless = wish != nullptr && std::string_view(wish) == "endless";
  if (!none && !endless) return;
  const Method mine = class_getInstanceMethod(self, none ? @selector(none) : @selector(endless));
  class_replaceMethod([NSProcessInfo class], @selector(arguments), method_getImplementation(mine),
                      method_getTypeEncoding(mine));
}

@end
