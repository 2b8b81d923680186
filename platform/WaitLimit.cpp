#include "platform/WaitLimit.h"

#include <chrono>

namespace platform {
namespace {

constexpr std::chrono::seconds kLimit{2};

enum class State { kNoScope, kNotWaited, kWaited };

thread_local State state = State::kNoScope;
thread_local WaitLimit::Clock::time_point sharedDeadline;

}  // namespace

WaitLimit::WaitLimit() : isOutermost_(state == State::kNoScope) {
  if (isOutermost_) state = State::kNotWaited;
}

WaitLimit::~WaitLimit() {
  if (isOutermost_) state = State::kNoScope;
}

WaitLimit::Clock::time_point WaitLimit::deadline() {
  if (state == State::kWaited) return sharedDeadline;
  const Clock::time_point deadline = Clock::now() + kLimit;
  if (state == State::kNoScope) return deadline;
  state = State::kWaited;
  sharedDeadline = deadline;
  return deadline;
}

}  // namespace platform
