#include "platform/PathLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

namespace platform {
namespace {

constexpr std::chrono::milliseconds kTimeout{200};
constexpr std::chrono::microseconds kRetryInterval{100};

}  // namespace

PathLock::PathLock(const std::string& path) : file_(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)) {
  const auto deadline = std::chrono::steady_clock::now() + kTimeout;
  while (file_ && ::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (std::chrono::steady_clock::now() > deadline) return;
    std::this_thread::sleep_for(kRetryInterval);
  }
  held_ = static_cast<bool>(file_);
}

}  // namespace platform
