#include "tests/nativeutils/FakeDesktop.h"

#include <chrono>
#include <numeric>
#include <optional>
#include <string>
#include <vector>

#include "platform/Desktop.h"
#include "platform/EventLoop.h"

using nativeutils_test::fakeDesktop;

namespace platform {

std::chrono::steady_clock::time_point runLoopTime() {
  const auto& intervals = fakeDesktop.intervals;
  return std::chrono::steady_clock::time_point(
      std::accumulate(intervals.begin(), intervals.end(), std::chrono::milliseconds(1000)));
}

void runLoopFor(std::chrono::milliseconds duration) {
  fakeDesktop.intervals.push_back(duration);
  if (fakeDesktop.onInterval) fakeDesktop.onInterval(fakeDesktop.intervals.size());
}

void postToAllSessions(const std::string& name, const std::string& object) {
  fakeDesktop.posted.emplace_back(name, object);
  if (fakeDesktop.onPost) fakeDesktop.onPost();
}

bool openUrl(const std::string&) {
  return false;
}

LaunchResult launchInForeground(const std::string& path, const std::vector<std::string>& arguments) {
  if (fakeDesktop.referenceFailure || !fakeDesktop.canLaunch) return {false, fakeDesktop.referenceFailure};
  fakeDesktop.launched = {path};
  fakeDesktop.launched.insert(fakeDesktop.launched.end(), arguments.begin(), arguments.end());
  return {true, std::nullopt};
}

RaiseResult raiseWindow(pid_t process) {
  fakeDesktop.requests.push_back(process);
  return fakeDesktop.requests.size() > fakeDesktop.unknownCount ? fakeDesktop.result : RaiseResult::kNotFound;
}

}  // namespace platform
