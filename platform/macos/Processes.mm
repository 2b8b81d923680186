#include "platform/Processes.h"

#import <Foundation/Foundation.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "platform/AutoreleasePool.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/TaskProgram.h"
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
  return kindOf(task.program) == FileKind::folder ? EACCES : ENOEXEC;
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

}  // namespace

std::optional<int> runTask(const Task& task) {
  return startedThen(task, endOf);
}

std::optional<pid_t> startTask(const Task& task) {
  return startedThen(task, numberOf);
}

// The task object lives until the process ends, and collects its end.
void waitForTaskAside(pid_t /*process*/) {}

}  // namespace platform
