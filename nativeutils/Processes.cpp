#include "nativeutils/Processes.h"

#include <pthread.h>

#include <chrono>
#include <cstdint>
#include <optional>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/Processes.h"

using nativeutils::kComponent;
using platform::Fronting;

namespace {

using Watcher = void* (*)(void*);

bool exists(const std::string& path) {
  return platform::kindOf(path) != platform::FileKind::kNone;
}

void logStart(const std::string& path, const std::vector<std::string>& args) {
  Logger* const log = Logger::getInstance();
  log->logDebug(kComponent, "Launch Process at path %s", path.c_str());
  int number = 0;
  for (const std::string& each : args)
    log->logDebug(kComponent, "Launch Process With Arg %d : %s", number++, each.c_str());
}

platform::Task inheriting(const std::string& path, const std::vector<std::string>& args) {
  platform::Task task;
  task.program = path;
  task.arguments = args;
  return task;
}

// Whether it was started; `returnCode` is set only then.
bool run(const platform::Task& task, unsigned long& returnCode) {
  const std::optional<int> end = platform::runTask(task);
  if (end) returnCode = static_cast<unsigned long>(static_cast<long>(*end));
  return end.has_value();
}

bool startAside(const platform::Task& task) {
  const std::optional<pid_t> process = platform::startTask(task);
  if (process) platform::waitForTaskAside(*process);
  return process.has_value();
}

bool launchInFront(const std::string& path, const std::vector<std::string>& args) {
  const platform::FrontLaunch launch = platform::launchInFront(path, args);
  if (launch.failure) {
    Logger::getInstance()->logWarn(kComponent, "Launch Process get FSRef  ErrorString (%s:%s), For file %s",
                                   launch.failure->error.c_str(), launch.failure->comment.c_str(), path.c_str());
  }
  return launch.launched;
}

Fronting bringToFrontInTime(pid_t process) {
  constexpr std::chrono::seconds patience(10);
  constexpr std::chrono::milliseconds turn(100);
  const auto end = platform::runLoopTime() + patience;
  Fronting fronting = platform::bringToFront(process);
  while (fronting == Fronting::unknown && platform::runLoopTime() < end) {
    platform::runLoopFor(turn);
    fronting = platform::bringToFront(process);
  }
  return fronting;
}

void showInFront(pid_t process, const std::string& path) {
  Logger* const log = Logger::getInstance();
  log->logInfo(kComponent, "Launching process .... %d", process);
  if (bringToFrontInTime(process) == Fronting::done) {
    log->logInfo(kComponent, "Bring to front process .... %d", process);
  } else {
    log->logWarn(kComponent, "Failed bring front... took much time to Launch Process %s", path.c_str());
  }
}

// Whether the watcher runs; the process is its own then.
bool startWatcher(Watcher watcher, pid_t process) {
  pthread_t thread;
  // NOLINTNEXTLINE(performance-no-int-to-ptr): watchers take the number so
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
  if (!(wait ? run(task, returnCode) : startAside(task))) {
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
  if (bringToFront && launchInFront(path, args)) return true;

  Logger::getInstance()->logInfo(kComponent, "Launch Process With Task ");
  const std::optional<pid_t> process = platform::startTask(inheriting(path, args));
  if (!process) return false;

  const bool watched = !bringToFront && watcher != nullptr && startWatcher(watcher, *process);
  if (!watched) platform::waitForTaskAside(*process);
  if (bringToFront) showInFront(*process, path);
  return true;
}

bool utilLaunchApplication(const std::string& path) {
  const platform::AutoreleaseScope scope;
  if (!exists(path)) return false;
  return startAside(inheriting(path, {}));
}

bool utilOpenURL(const std::string& url) {
  const platform::AutoreleaseScope scope;
  return platform::openUrl(url);
}
