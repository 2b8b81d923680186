#include "platform/EventLoop.h"

#include <chrono>

namespace platform {

std::chrono::steady_clock::time_point runLoopTime() {
  return std::chrono::steady_clock::now();
}

}  // namespace platform
