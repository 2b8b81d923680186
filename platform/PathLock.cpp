#include "platform/PathLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {

PathLock::PathLock(const std::string& path) : turn_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
  using namespace std::chrono_literals;
  const auto patience = std::chrono::steady_clock::now() + 200ms;
  while (turn_ && ::flock(turn_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (std::chrono::steady_clock::now() > patience) return;
    std::this_thread::sleep_for(100us);
  }
}

}  // namespace platform
