// The sign-in window's entry point on macOS.

#import <Cocoa/Cocoa.h>

#include <cstdlib>
#include <memory>

#include "app/AbnormalEnd.h"
#include "app/CommandLine.h"
#include "applog/Logger.h"

namespace {

struct Free {
  void operator()(const char** vector) const { std::free(vector); }
};

// Returns false if there is no memory for the arguments.
bool parseOptions() {
  NSArray* const arguments = [[NSProcessInfo processInfo] arguments];
  const NSUInteger count = [arguments count];
  std::unique_ptr<const char*[], Free> vector;
  if (arguments != nil) {
    vector.reset(static_cast<const char**>(std::malloc(count * sizeof(const char*))));
    if (!vector) return false;
  }
  for (NSUInteger i = 0; i < count; ++i) {
    NSString* const argument = [arguments objectAtIndex:i];
    vector[i] = nullptr;
    if (argument != nil) vector[i] = [argument UTF8String];
  }
  CommandLine::GetInstance()->InitCommandLine(count, vector.get());
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  forbidCoreFiles();
  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);

  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  const bool parsed = parseOptions();
  [pool release];
  if (!parsed) return 0;
  reportAbnormalEnd(CommandLine::GetInstance()->pipe_name);

  return NSApplicationMain(argc, const_cast<const char**>(argv));
}
