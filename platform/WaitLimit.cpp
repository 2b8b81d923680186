#include "platform/WaitLimit.h"

#include <chrono>

namespace platform {
namespace {

constexpr std::chrono::seconds kLimit{2};

}  // namespace

WaitLimit::Clock::time_point WaitLimit::deadline() {
  if (state == State::kWaited) return sharedDeadline;
  const Clock::time_point deadline = Clock::now() + kLimit;
  if (state == State::kNoScope) return deadline;
  state = State::kWaited;
  sharedDeadline = deadline;
  return deadline;
}

}  // namespace platform
