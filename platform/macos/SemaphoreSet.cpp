#include "platform/SemaphoreSet.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {
namespace {

constexpr std::chrono::microseconds kFirstPause{50};
constexpr std::chrono::microseconds kLongestPause{5000};

}  // namespace

// macOS has no `semtimedop`.
bool SemaphoreSet::takeBefore(WaitLimit::Clock::time_point deadline, int member) const {
  for (auto pause = kFirstPause; !change(member, -1, SEM_UNDO | IPC_NOWAIT);
       pause = std::min(2 * pause, kLongestPause)) {
    if (errno != EAGAIN || WaitLimit::Clock::now() >= deadline) return false;
    std::this_thread::sleep_for(pause);
    errno = EAGAIN;
  }
  return true;
}

}  // namespace platform
