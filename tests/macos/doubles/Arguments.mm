// Replaces the arguments of the process, as the environment variable SVO_TEST_ARGUMENTS says.
//   none     no array
//   endless  more arguments than memory can hold

#import <Foundation/Foundation.h>

#include <cstdlib>
#include <string_view>

#include "tests/macos/doubles/Methods.h"

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

namespace {

NSArray* noArguments(NSProcessInfo*, SEL) {
  return nil;
}

NSArray* endlessArguments(NSProcessInfo*, SEL) {
  return [[[EndlessArray alloc] init] autorelease];
}

}  // namespace

@interface ArgumentsReplacement : NSObject
@end

@implementation ArgumentsReplacement

+ (void)load {
  const char* const value = std::getenv("SVO_TEST_ARGUMENTS");
  const std::string_view kind = value == nullptr ? "" : value;
  if (kind == "none") doubles::replaceMethod([NSProcessInfo class], @selector(arguments), noArguments, "@@:");
  if (kind == "endless") doubles::replaceMethod([NSProcessInfo class], @selector(arguments), endlessArguments, "@@:");
}

@end
