#include "platform/WaitLimit.h"

namespace platform {

WaitLimit::Clock::time_point WaitLimit::deadline() {
  if (state == State::kWaited) return sharedDeadline;
  const Clock::time_point deadline = Clock::now() + limit;
  if (state == State::kNoScope) return deadline;
  state = State::kWaited;
  sharedDeadline = deadline;
  return deadline;
}

}  // namespace platform
