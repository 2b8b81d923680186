#include "platform/Processes.h"

#import <Foundation/Foundation.h>
#include <sys/sysctl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

#include "platform/EventLoop.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/Text.h"
#include "platform/macos/FoundationText.h"

namespace platform {
namespace {

bool isText(const std::string& bytes) {
  return isUtf8(untilNul(bytes));
}

// Returns an `errno`: Foundation reports its errors as text only.
int launchError(const Task& task) {
  const std::vector<std::string>& arguments = task.arguments;
  const bool isUtf8Only =
      isText(task.program) && isText(task.folder) && std::all_of(arguments.begin(), arguments.end(), isText);
  if (!isUtf8Only) return EILSEQ;
  if (!task.folder.empty() && ::access(task.folder.c_str(), X_OK) != 0) return errno;
  if (::access(task.program.c_str(), X_OK) != 0) return errno;
  return kindOf(task.program) == FileKind::kFolder ? EACCES : ENOEXEC;
}

NSTask* launchWithOptions(NSString* program, NSArray* arguments, NSString* folder, bool silent) {
  NSTask* const task = [[[NSTask alloc] init] autorelease];
  [task setLaunchPath:program];
  [task setArguments:arguments];
  if ([folder length] != 0) [task setCurrentDirectoryPath:folder];
  if (silent) {
    [task setStandardOutput:[NSFileHandle fileHandleWithNullDevice]];
    [task setStandardError:[NSFileHandle fileHandleWithNullDevice]];
  }
  [task launch];
  return task;
}

// Returns nil on failure.
NSTask* launch(const Task& task) {
  NSString* const program = stringOf(resolveProgram(task));
  NSString* const folder = stringOf(task.folder);
  NSArray* const arguments = stringsOf(task.arguments);
  if (program == nil || folder == nil || arguments == nil) return nil;
  @try {
    if (task.silent || !task.folder.empty()) return launchWithOptions(program, arguments, folder, task.silent);
    return [NSTask launchedTaskWithLaunchPath:program arguments:arguments];
  } @catch (...) {
    return nil;
  }
}

int processIdOf(NSTask* task) {
  return [task processIdentifier];
}

int waitFor(NSTask* task) {
  @try {
    [task waitUntilExit];
    return [task terminationStatus];
  } @catch (...) {
    return -1;
  }
}

std::optional<int> launchAnd(const Task& task, int (*then)(NSTask*)) {
  {
    const AutoreleaseScope scope;
    if (NSTask* const running = launch(task)) return then(running);
  }
  // Set after the pool is closed, because releasing objects may change it.
  errno = launchError(task);
  return std::nullopt;
}

// Returns the value of a kernel variable; empty on failure.
std::vector<char> querySysctl(std::vector<int> name) {
  constexpr int kMaxTries = 100;
  const auto length = static_cast<u_int>(name.size());
  for (int tries = 0; tries < kMaxTries; ++tries) {
    std::size_t size = 0;
    if (::sysctl(name.data(), length, nullptr, &size, nullptr, 0) != 0 || size == 0) return {};
    std::vector<char> value(size);
    if (::sysctl(name.data(), length, value.data(), &size, nullptr, 0) == 0) {
      value.resize(size);
      return value;
    }
    if (errno != ENOMEM) return {};  // ENOMEM: the value has grown since
  }
  return {};
}

}  // namespace

std::optional<int> runTask(const Task& task) {
  return launchAnd(task, waitFor);
}

std::optional<pid_t> startTask(const Task& task) {
  return launchAnd(task, processIdOf);
}

// The task object waits for the process.
void waitForTaskInBackground(pid_t /*process*/) {}

std::vector<pid_t> allProcesses() {
  const std::vector<char> table = querySysctl({CTL_KERN, KERN_PROC, KERN_PROC_ALL});
  std::vector<pid_t> processes;
  for (std::size_t at = 0; at + sizeof(kinfo_proc) <= table.size(); at += sizeof(kinfo_proc)) {
    kinfo_proc process;
    std::memcpy(&process, table.data() + at, sizeof process);
    processes.push_back(process.kp_proc.p_pid);
  }
  return processes;
}

std::string programOf(pid_t process) {
  const std::vector<char> arguments = querySysctl({CTL_KERN, KERN_PROCARGS, process});
  return std::string(arguments.begin(), std::find(arguments.begin(), arguments.end(), '\0'));
}

}  // namespace platform
