#include "tests/macos/doubles/MainBundle.h"

#import <Foundation/Foundation.h>

#include <filesystem>

#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Uncounted.h"

namespace {

NSString* (*theirPath)(NSBundle*, SEL);
NSString* (*theirExecutable)(NSBundle*, SEL);
NSArray* (*theirArchitectures)(NSBundle*, SEL);

NSString* string(const std::string& text) {
  return [NSString stringWithUTF8String:text.c_str()];
}

std::string running() {
  return std::filesystem::read_symlink("/proc/self/exe").string();
}

NSString* path(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return theirPath(self, method);
  if (doubles::statusOf("bundlePath") != 0) return nil;
  return string(doubles::mainBundle.path.value_or(std::filesystem::path(running()).parent_path().string()));
}

NSString* executable(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return theirExecutable(self, method);
  if (doubles::statusOf("executablePath") != 0) return nil;
  return string(doubles::mainBundle.executable.value_or(running()));
}

NSArray* architectures(NSBundle* self, SEL method) {
  if (self != [NSBundle mainBundle]) return theirArchitectures(self, method);
  if (doubles::statusOf("executableArchitectures") != 0) return nil;
  NSMutableArray* const numbers = [NSMutableArray array];
  for (const long number : doubles::mainBundle.architectures)
    [numbers addObject:[NSNumber numberWithLong:number]];
  return numbers;
}

}  // namespace

@interface BundleAsOnAMac : NSObject
@end

@implementation BundleAsOnAMac

+ (void)load {
  const doubles::Uncounted uncounted;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  const Class bundle = [NSBundle class];
  (void)[NSBundle mainBundle];  // made of its own path, which a test may withhold later
  theirPath = doubles::replaceIn(bundle, @selector(bundlePath), path, "@@:");
  theirExecutable = doubles::replaceIn(bundle, @selector(executablePath), executable, "@@:");
  theirArchitectures = doubles::replaceIn(bundle, @selector(executableArchitectures), architectures, "@@:");
  [pool release];
}

@end
