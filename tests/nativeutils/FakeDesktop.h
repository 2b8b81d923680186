// Stands in for a run loop whose time passes at once, for notifications and for what a desktop does with programs; a
// test that links FakeDesktop.cpp decides what they do.

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
  // The run loop: each turn takes its time, then happens what `duringTurn` does with the number of turns so far.
  std::vector<std::chrono::milliseconds> turns;
  std::function<void(std::size_t)> duringTurn;

  // The notifications, as name and object.
  std::vector<std::pair<std::string, std::string>> posted;
  std::function<void()> onPost;

  // The launcher, which cannot launch anything unless a test lets it.
  std::optional<platform::ReferenceFailure> failureToRefer;
  bool canLaunch = false;
  std::vector<std::string> launched;

  // What the answers to bringing a process to the front are once it has been asked so often in vain.
  std::size_t unknownFor = 0;
  platform::RaiseResult fronting = platform::RaiseResult::kRaised;
  std::vector<pid_t> fronted;
};

inline FakeDesktop fakeDesktop;

}  // namespace nativeutils_test
