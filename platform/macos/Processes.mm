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

// Foundation gives its reasons in words only.
int reasonAgainst(const Task& task) {
  const std::vector<std::string>& arguments = task.arguments;
  const bool told =
      isText(task.program) && isText(task.folder) && std::all_of(arguments.begin(), arguments.end(), isText);
  if (!told) return EILSEQ;
  if (!task.folder.empty() && ::access(task.folder.c_str(), X_OK) != 0) return errno;
  if (::access(task.program.c_str(), X_OK) != 0) return errno;
  return kindOf(task.program) == FileKind::kFolder ? EACCES : ENOEXEC;
}

NSTask* launchedApart(NSString* program, NSArray* arguments, NSString* folder, bool silent) {
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

// Nil when it cannot be started.
NSTask* launched(const Task& task) {
  NSString* const program = stringOf(programFromItsFolder(task));
  NSString* const folder = stringOf(task.folder);
  NSArray* const arguments = stringsOf(task.arguments);
  if (program == nil || folder == nil || arguments == nil) return nil;
  @try {
    if (task.silent || !task.folder.empty()) return launchedApart(program, arguments, folder, task.silent);
    return [NSTask launchedTaskWithLaunchPath:program arguments:arguments];
  } @catch (...) {
    return nil;
  }
}

int numberOf(NSTask* task) {
  return [task processIdentifier];
}

int endOf(NSTask* task) {
  @try {
    [task waitUntilExit];
    return [task terminationStatus];
  } @catch (...) {
    return -1;
  }
}

std::optional<int> startedThen(const Task& task, int (*then)(NSTask*)) {
  {
    const AutoreleaseScope scope;
    if (NSTask* const running = launched(task)) return then(running);
  }
  // Now that no object is released any more, which could set it anew.
  errno = reasonAgainst(task);
  return std::nullopt;
}

// What the kernel has under this name; nothing when it does not tell.
std::vector<char> kernelsAnswer(std::vector<int> name) {
  constexpr int mostTries = 100;
  const auto length = static_cast<u_int>(name.size());
  for (int tries = 0; tries < mostTries; ++tries) {
    std::size_t size = 0;
    if (::sysctl(name.data(), length, nullptr, &size, nullptr, 0) != 0 || size == 0) return {};
    std::vector<char> answer(size);
    if (::sysctl(name.data(), length, answer.data(), &size, nullptr, 0) == 0) {
      answer.resize(size);
      return answer;
    }
    if (errno != ENOMEM) return {};  // it may have grown meanwhile
  }
  return {};
}

}  // namespace

std::optional<int> runTask(const Task& task) {
  return startedThen(task, endOf);
}

std::optional<pid_t> startTask(const Task& task) {
  return startedThen(task, numberOf);
}

// The task object lives until the process ends, and collects its end.
void waitForTaskAside(pid_t /*process*/) {}

std::vector<pid_t> allProcesses() {
  const std::vector<char> answer = kernelsAnswer({CTL_KERN, KERN_PROC, KERN_PROC_ALL});
  std::vector<pid_t> processes;
  for (std::size_t at = 0; at + sizeof(kinfo_proc) <= answer.size(); at += sizeof(kinfo_proc)) {
    kinfo_proc process;
    std::memcpy(&process, answer.data() + at, sizeof process);
    processes.push_back(process.kp_proc.p_pid);
  }
  return processes;
}

std::string programOf(pid_t process) {
  const std::vector<char> area = kernelsAnswer({CTL_KERN, KERN_PROCARGS, process});
  return std::string(area.begin(), std::find(area.begin(), area.end(), '\0'));
}

}  // namespace platform
