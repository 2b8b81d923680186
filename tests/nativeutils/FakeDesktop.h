// Replaces the run loop, the notifications, the application launcher and the raising of windows. Requires
// FakeDesktop.cpp. The time of the run loop advances without waiting.

#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Desktop.h"

namespace nativeutils_test {

struct FakeDesktop {
  // Durations of the run loop's calls. `onInterval` is called in each, with the number of calls so far.
  std::vector<std::chrono::milliseconds> intervals;
  std::function<void(std::size_t)> onInterval;

  // Names and objects of the notifications.
  std::vector<std::pair<std::string, std::string>> posted;
  std::function<void()> onPost;

  // The launcher fails unless `canLaunch` is set.
  std::optional<platform::ReferenceFailure> referenceFailure;
  bool canLaunch = false;
  std::vector<std::string> launched;  // path and arguments

  // Requests to raise the window of a process. The first `unknownCount` find no window, the others have `result`.
  std::vector<pid_t> requests;
  std::size_t unknownCount = 0;
  platform::RaiseResult result = platform::RaiseResult::kRaised;
};

inline FakeDesktop fakeDesktop;

}  // namespace nativeutils_test
