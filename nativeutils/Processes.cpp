#include "nativeutils/Processes.h"

#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/Processes.h"

using nativeutils::kComponent;
using platform::RaiseResult;

namespace {

using Watcher = void* (*)(void*);

bool exists(const std::string& path) {
  return platform::kindOf(path) != platform::FileKind::kNone;
}

void logStart(const std::string& path, const std::vector<std::string>& args) {
  Logger* const log = Logger::getInstance();
  log->logDebug(kComponent, "Launch Process at path %s", path.c_str());
  int index = 0;
  for (const std::string& argument : args)
    log->logDebug(kComponent, "Launch Process With Arg %d : %s", index++, argument.c_str());
}

platform::Task taskOf(const std::string& path, const std::vector<std::string>& args) {
  platform::Task task;
  task.program = path;
  task.arguments = args;
  return task;
}

// Returns false, with `returnCode` unchanged, if the task cannot be started.
bool runToEnd(const platform::Task& task, unsigned long& returnCode) {
  const std::optional<int> status = platform::runTask(task);
  if (status) returnCode = static_cast<unsigned long>(static_cast<long>(*status));
  return status.has_value();
}

bool startInBackground(const platform::Task& task) {
  const std::optional<pid_t> process = platform::startTask(task);
  if (process) platform::waitForTaskInBackground(*process);
  return process.has_value();
}

bool launchInForeground(const std::string& path, const std::vector<std::string>& args) {
  const platform::LaunchResult launch = platform::launchInForeground(path, args);
  if (launch.failure) {
    Logger::getInstance()->logWarn(kComponent, "Launch Process get FSRef  ErrorString (%s:%s), For file %s",
                                   launch.failure->error.c_str(), launch.failure->comment.c_str(), path.c_str());
  }
  return launch.launched;
}

RaiseResult raiseWhenFound(pid_t process) {
  constexpr std::chrono::seconds kTimeout(10);
  constexpr std::chrono::milliseconds kInterval(100);
  const auto deadline = platform::runLoopTime() + kTimeout;
  RaiseResult result = platform::raiseWindow(process);
  while (result == RaiseResult::kNotFound && platform::runLoopTime() < deadline) {
    platform::runLoopFor(kInterval);
    result = platform::raiseWindow(process);
  }
  return result;
}

void raiseAndLog(pid_t process, const std::string& path) {
  Logger* const log = Logger::getInstance();
  log->logInfo(kComponent, "Launching process .... %d", process);
  if (raiseWhenFound(process) == RaiseResult::kRaised) {
    log->logInfo(kComponent, "Bring to front process .... %d", process);
  } else {
    log->logWarn(kComponent, "Failed bring front... took much time to Launch Process %s", path.c_str());
  }
}

// If true, the watcher waits for the process.
bool startWatcher(Watcher watcher, pid_t process) {
  pthread_t thread;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): the signature of watchers is fixed by the interface
  void* const argument = reinterpret_cast<void*>(static_cast<std::intptr_t>(process));
  return process != 0 && ::pthread_create(&thread, nullptr, watcher, argument) == 0;
}

}  // namespace

bool utilCreateProcessWithReturnCode(const std::string& path, const std::vector<std::string>& args,
                                     unsigned long& status, bool wait, unsigned long& returnCode, bool /*unused*/) {
  const platform::AutoreleaseScope scope;
  Logger* const log = Logger::getInstance();
  if (path.empty()) {
    log->logError(kComponent, "CreateProcess failed. PathToProcess does not exist.");
    return false;
  }
  if (!exists(path)) {
    log->logError(kComponent, "File doesnot exists at: '%s'", path.c_str());
    return false;
  }

  logStart(path, args);
  log->logInfo(kComponent, "Launch Process With Task ");
  const platform::Task task{path, args, platform::deletingLastPathComponent(path), true};
  if (!(wait ? runToEnd(task, returnCode) : startInBackground(task))) {
    log->logError(kComponent, "Launch Process With Task ");
    return false;
  }

  if (!wait) returnCode = status = 0;
  return true;
}

bool utilCreateProcess(const std::string& path, const std::vector<std::string>& args, bool bringToFront,
                       void* (*watcher)(void*)) {
  const platform::AutoreleaseScope scope;
  if (path.empty() || !exists(path)) return false;

  logStart(path, args);
  if (bringToFront && launchInForeground(path, args)) return true;

  Logger::getInstance()->logInfo(kComponent, "Launch Process With Task ");
  const std::optional<pid_t> process = platform::startTask(taskOf(path, args));
  if (!process) return false;

  const bool watched = !bringToFront && watcher != nullptr && startWatcher(watcher, *process);
  if (!watched) platform::waitForTaskInBackground(*process);
  if (bringToFront) raiseAndLog(*process, path);
  return true;
}

bool utilLaunchApplication(const std::string& path) {
  const platform::AutoreleaseScope scope;
  if (!exists(path)) return false;
  return startInBackground(taskOf(path, {}));
}

bool utilOpenURL(const std::string& url) {
  const platform::AutoreleaseScope scope;
  return platform::openUrl(url);
}
