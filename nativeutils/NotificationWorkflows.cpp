#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <memory>
#include <new>
#include <string>

#include "applog/Logger.h"
#include "applog/OVNSemaphoreLock.h"
#include "nativeutils/Component.h"
#include "nativeutils/Processes.h"
#include "platform/Desktop.h"
#include "platform/EventLoop.h"
#include "platform/Processes.h"

using nativeutils::kComponent;

namespace {

constexpr const char* kNotifier = "com.orvane.orvane_application_manager.VormNotifier";
constexpr const char* kTerminateNotification =
    "com.orvane.orvane_application_manager.VormNotifier.TerminateInstance_Notification";
constexpr const char* kNotifierProgram = "Vorm Updates Notifier";

constexpr int kWorkflowLock = 77445459;
constexpr int kWorkflowSlots = 255;

bool isReleasedWithin(OVNSemaphoreLock& lock, std::chrono::seconds timeout) {
  constexpr std::chrono::milliseconds kInterval(500);
  const auto deadline = platform::runLoopTime() + timeout;
  while (lock.isLocked() && platform::runLoopTime() < deadline)
    platform::runLoopFor(kInterval);
  return !lock.isLocked();
}

void killNotifiers() {
  for (const pid_t process : platform::allProcesses()) {
    if (process == ::getpid() || platform::programOf(process).find(kNotifierProgram) == std::string::npos) continue;
    // The caller checks the lock, which shows whether the process ended.
    [[maybe_unused]] const int result = std::system(("kill -9 " + std::to_string(process)).c_str());
  }
}

}  // namespace

bool utilCloseAllNotificationWorkflows() {
  const platform::AutoreleaseScope scope;
  Logger* const log = Logger::getInstance();
  const std::unique_ptr<OVNSemaphoreLock> lock(new (std::nothrow)
                                                   OVNSemaphoreLock(kWorkflowLock, kWorkflowSlots, SystemLock));
  if (!lock) {
    log->logFatal(kComponent, "Error Failed to Create GlobalNonDeploymentWorkflowLock Object ...");
    return false;
  }
  if (!lock->isLocked()) return true;

  platform::postToAllSessions(kTerminateNotification, kNotifier);
  if (isReleasedWithin(*lock, std::chrono::seconds(30))) return true;

  log->logWarn(kComponent, "Error Failed to close Notification Workflows. Trying to kill update notifier.");
  killNotifiers();
  if (isReleasedWithin(*lock, std::chrono::seconds(2))) return true;

  log->logWarn(kComponent, "Error Failed to kill update notifier.");
  return false;
}
