#include "tests/macos/doubles/MainBundle.h"

#import <Foundation/Foundation.h>

#include <filesystem>

#include "tests/macos/doubles/DisabledLeakCheck.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemDoubles.h"

namespace {

NSString* (*originalPath)(NSBundle*, SEL);
NSString* (*originalExecutable)(NSBundle*, SEL);
NSArray* (*originalArchitectures)(NSBundle*, SEL);

NSString* string(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

std::string runningExecutable() {
  return std::filesystem::read_symlink("/proc/self/exe").string();
}

NSString* path(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return originalPath(self, method);
  if (doubles::statusOf("bundlePath") != 0) return nil;
  return string(doubles::mainBundle.path.value_or(std::filesystem::path(runningExecutable()).parent_path().string()));
}

NSString* executable(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return originalExecutable(self, method);
  if (doubles::statusOf("executablePath") != 0) return nil;
  return string(doubles::mainBundle.executable.value_or(runningExecutable()));
}

NSArray* architectures(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return originalArchitectures(self, method);
  if (doubles::statusOf("executableArchitectures") != 0) return nil;
  NSMutableArray* const numbers = [NSMutableArray array];
  for (const long number : doubles::mainBundle.architectures)
    [numbers addObject:[NSNumber numberWithLong:number]];
  return numbers;
}

}  // namespace

@interface MainBundleReplacement : NSObject
@end

@implementation MainBundleReplacement

+ (void)load {
  const doubles::DisabledLeakCheck scope;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  const Class bundle = [NSBundle class];
  // GNUstep creates the main bundle from its path, so it must exist before a test makes the path fail.
  (void)[NSBundle mainBundle];
  originalPath = doubles::replaceMethod(bundle, @selector(bundlePath), path, "@@:");
  originalExecutable = doubles::replaceMethod(bundle, @selector(executablePath), executable, "@@:");
  originalArchitectures = doubles::replaceMethod(bundle, @selector(executableArchitectures), architectures, "@@:");
  [pool release];
}

@end
