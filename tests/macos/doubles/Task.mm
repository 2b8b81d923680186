// Task objects as on a Mac: one starts exactly the program at its path, throws when that cannot be run, lives until the
// process ends, collects its end and that of no other child, and knows its end at once.

#import <Foundation/Foundation.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>

#include "platform/UniqueFd.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemCalls.h"
#include "tests/macos/doubles/Uncounted.h"

@interface NSTask (AsOnAMac)
- (std::string)told;
- (void)keepStill;
- (void)lose;
@end

@implementation NSTask (AsOnAMac)

// Its notification would keep it until the run loop of the thread that launched it runs.
- (void)keepStill {
  _hasNotified = YES;
}

// Somebody else has taken its end.
- (void)lose {
  if (_hasCollected) return;
  _terminationStatus = -1;
  _hasCollected = YES;
  _hasTerminated = YES;
}

- (std::string)told {
  std::string words = [_launchPath UTF8String];
  for (NSUInteger i = 0; i < [_arguments count]; ++i)
    words += std::string(" <") + [[_arguments objectAtIndex:i] UTF8String] + ">";
  if (_currentDirectoryPath != nil) words += std::string(" in ") + [_currentDirectoryPath UTF8String];
  const auto isNull = [](NSFileHandle* handle) {
    std::array<char, 32> target{};
    const std::string link = "/proc/self/fd/" + std::to_string([handle fileDescriptor]);
    return ::readlink(link.c_str(), target.data(), target.size() - 1) > 0 &&
           std::strcmp(target.data(), "/dev/null") == 0;
  };
  if (_standardInput != nil) words += " input";
  if (_standardOutput != nil) words += isNull(_standardOutput) ? " output null" : " output";
  if (_standardError != nil) words += isNull(_standardError) ? " errors null" : " errors";
  return words;
}

@end

namespace {

std::recursive_mutex collecting;
void (*theirCollect)(NSTask*, SEL);
void (*theirLaunch)(NSTask*, SEL);
void (*theirDealloc)(NSTask*, SEL);

NSTask* initTask(NSTask* self, SEL) {
  doubles::made("NSTask");
  if (doubles::statusOf("NSTask init") == 0) return self;
  [self release];
  return nil;
}

void deallocTask(NSTask* self, SEL method) {
  doubles::givenBack("NSTask");
  theirDealloc(self, method);
}

// What the kernel can start by itself; a file that may not be read may be such a one.
bool isProgram(const char* path) {
  const platform::UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC));
  std::array<char, 4> start{};
  if (!file) return true;
  if (::read(file.get(), start.data(), start.size()) < 2) return false;
  return std::memcmp(start.data(), "#!", 2) == 0 || std::memcmp(start.data(), "\177ELF", 4) == 0;
}

void refuse(NSString* reason) {
  [NSException raise:NSInvalidArgumentException format:@"%@", reason];
}

void check(NSTask* task) {
  const char* const program = [[task launchPath] fileSystemRepresentation];
  struct stat item {};
  if (::access([[task currentDirectoryPath] fileSystemRepresentation], X_OK) != 0)
    refuse(@"working directory doesn't exist.");
  if (::access(program, X_OK) != 0 || ::stat(program, &item) != 0 || S_ISDIR(item.st_mode))
    refuse(@"launch path not accessible");
  if (!isProgram(program)) refuse(@"Couldn't posix_spawn: error 8");
}

// The task is kept until then.
void collectWhenEnded(NSTask* task) {
  sigset_t all;
  ::sigfillset(&all);
  ::pthread_sigmask(SIG_SETMASK, &all, nullptr);
  siginfo_t ended{};
  const auto process = static_cast<id_t>([task processIdentifier]);
  int result = 0;
  do {
    result = ::waitid(P_PID, process, &ended, WEXITED | WNOWAIT);
  } while (result != 0 && errno == EINTR);
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  {
    const std::lock_guard<std::recursive_mutex> turn(collecting);
    if (result == 0) (void)[task isRunning];
    [task lose];
  }
  [task release];
  [pool release];
}

void launch(NSTask* self, SEL method) {
  doubles::noteCall("launch " + [self told]);
  if (doubles::statusOf("launch") != 0) refuse(@"launch fails");
  check(self);
  [self keepStill];
  theirLaunch(self, method);
  [self retain];
  std::thread(collectWhenEnded, self).detach();
}

NSTask* launchedTask(Class, SEL, NSString* path, NSArray* arguments) {
  doubles::noteCall("launchedTaskWithLaunchPath:arguments:");
  NSTask* const task = [[[NSTask alloc] init] autorelease];
  [task setLaunchPath:path];
  [task setArguments:arguments];
  [task launch];
  return task;
}

void collect(NSTask* self, SEL method) {
  const std::lock_guard<std::recursive_mutex> turn(collecting);
  theirCollect(self, method);
}

void waitUntilExit(NSTask* self, SEL) {
  doubles::noteCall("waitUntilExit");
  if (doubles::statusOf("waitUntilExit") != 0) refuse(@"waitUntilExit fails");
  while ([self isRunning]) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSDate* const soon = [NSDate dateWithTimeIntervalSinceNow:0.001];
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:soon];
    [NSThread sleepUntilDate:soon];
    [pool release];
  }
}

}  // namespace

@interface TaskAsOnAMac : NSObject
@end

@implementation TaskAsOnAMac

+ (void)load {
  const doubles::Uncounted uncounted;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  NSTask* const any = [[NSTask alloc] init];
  const Class concrete = [any class];
  [any release];
  ::signal(SIGCHLD, SIG_DFL);  // which the class catches, to wait for every child of the process

  doubles::replaceIn(concrete, @selector(init), initTask, "@@:");
  theirDealloc = doubles::replaceIn(concrete, @selector(dealloc), deallocTask, "v@:");
  theirLaunch = doubles::replaceIn(concrete, @selector(launch), launch, "v@:");
  theirCollect = doubles::replaceIn(concrete, @selector(_collectChild), collect, "v@:");
  doubles::replaceIn(concrete, @selector(waitUntilExit), waitUntilExit, "v@:");
  doubles::replaceOf([NSTask class], @selector(launchedTaskWithLaunchPath:arguments:), launchedTask, "@@:@@");
  [pool release];
}

@end
