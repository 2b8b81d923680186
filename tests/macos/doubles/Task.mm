// `NSTask` as on macOS. Different from GNUstep's:
//
// - A task starts exactly the program at its path, and throws if the program cannot be executed.
// - A task object exists until its process ends.
// - It collects the exit status of its own process only, at once.
// - `waitUntilExit` waits without a delay.

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
#include <thread>

#include "platform/UniqueFd.h"
#include "tests/macos/doubles/DisabledLeakCheck.h"
#include "tests/macos/doubles/Methods.h"
#include "tests/macos/doubles/SystemDoubles.h"

@interface NSTask (MacTask)
- (void)disableNotification;
- (void)markAsLost;
@end

@implementation NSTask (MacTask)

// GNUstep's notification would retain the task until the run loop of the launching thread runs.
- (void)disableNotification {
  _hasNotified = YES;
}

// Ends the task without an exit status, if other code has waited for the process.
- (void)markAsLost {
  if (_hasCollected) return;
  _terminationStatus = -1;
  _hasCollected = YES;
  _hasTerminated = YES;
}

@end

namespace {

std::recursive_mutex collectMutex;
void (*originalCollect)(NSTask*, SEL);
void (*originalLaunch)(NSTask*, SEL);
void (*originalDealloc)(NSTask*, SEL);

NSTask* initTask(NSTask* self, SEL) {
  doubles::objectCreated("NSTask");
  if (doubles::statusOf("NSTask init") == 0) return self;
  [self release];
  return nil;
}

void deallocTask(NSTask* self, SEL method) {
  doubles::objectReleased("NSTask");
  originalDealloc(self, method);
}

// Whether the kernel can execute the file. True for an unreadable file: it may be executable.
bool isProgram(const char* path) {
  const platform::UniqueFd file(::open(path, O_RDONLY | O_CLOEXEC));
  std::array<char, 4> start{};
  if (!file) return true;
  if (::read(file.get(), start.data(), start.size()) < 2) return false;
  return std::memcmp(start.data(), "#!", 2) == 0 || std::memcmp(start.data(), "\177ELF", 4) == 0;
}

void throwReason(NSString* reason) {
  [NSException raise:NSInvalidArgumentException format:@"%@", reason];
}

void check(NSTask* task) {
  const char* const program = [[task launchPath] fileSystemRepresentation];
  struct stat item {};
  if (::access([[task currentDirectoryPath] fileSystemRepresentation], X_OK) != 0)
    throwReason(@"working directory doesn't exist.");
  if (::access(program, X_OK) != 0 || ::stat(program, &item) != 0 || S_ISDIR(item.st_mode))
    throwReason(@"launch path not accessible");
  if (!isProgram(program)) throwReason(@"Couldn't posix_spawn: error 8");
}

// Waits for the process of a task and releases the task.
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
    const std::lock_guard<std::recursive_mutex> lock(collectMutex);
    if (result == 0) (void)[task isRunning];
    [task markAsLost];
  }
  [task release];
  [pool release];
}

void launch(NSTask* self, SEL method) {
  check(self);
  [self disableNotification];
  originalLaunch(self, method);
  [self retain];
  std::thread(collectWhenEnded, self).detach();
}

NSTask* launchedTask(Class, SEL, NSString* path, NSArray* arguments) {
  NSTask* const task = [[[NSTask alloc] init] autorelease];
  [task setLaunchPath:path];
  [task setArguments:arguments];
  [task launch];
  return task;
}

void collect(NSTask* self, SEL method) {
  const std::lock_guard<std::recursive_mutex> lock(collectMutex);
  originalCollect(self, method);
}

void waitUntilExit(NSTask* self, SEL) {
  if (doubles::statusOf("waitUntilExit") != 0) throwReason(@"waitUntilExit fails");
  while ([self isRunning]) {
    NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
    NSDate* const soon = [NSDate dateWithTimeIntervalSinceNow:0.001];
    [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:soon];
    [NSThread sleepUntilDate:soon];
    [pool release];
  }
}

// GNUstep's handler of SIGCHLD lets the next run loop wait for every child of the process. GNUstep 1.31 starts a
// program while it is initialized, so that the handler has run already: a run loop without children forgets it.
void removeChildHandler() {
  ::signal(SIGCHLD, SIG_DFL);
  [[NSRunLoop currentRunLoop] runMode:NSDefaultRunLoopMode beforeDate:[NSDate date]];
}

}  // namespace

@interface TaskReplacement : NSObject
@end

@implementation TaskReplacement

+ (void)load {
  const doubles::DisabledLeakCheck scope;
  NSAutoreleasePool* const pool = [[NSAutoreleasePool alloc] init];
  NSTask* const task = [[NSTask alloc] init];
  const Class concrete = [task class];
  [task release];
  removeChildHandler();

  doubles::replaceMethod(concrete, @selector(init), initTask, "@@:");
  originalDealloc = doubles::replaceMethod(concrete, @selector(dealloc), deallocTask, "v@:");
  originalLaunch = doubles::replaceMethod(concrete, @selector(launch), launch, "v@:");
  originalCollect = doubles::replaceMethod(concrete, @selector(_collectChild), collect, "v@:");
  doubles::replaceMethod(concrete, @selector(waitUntilExit), waitUntilExit, "v@:");
  doubles::replaceClassMethod([NSTask class], @selector(launchedTaskWithLaunchPath:arguments:), launchedTask, "@@:@@");
  [pool release];
}

@end
