#include "platform/PathLock.h"

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <chrono>
#include <thread>

#include "platform/OwnersFolder.h"

namespace platform {
namespace {

constexpr std::chrono::milliseconds kTimeout{200};
constexpr std::chrono::microseconds kRetryInterval{100};

}  // namespace

PathLock::PathLock(const std::string& path) {
  if (const OwnersFolder folder(path); folder) {
    constexpr int kFlags = O_RDONLY | O_NONBLOCK | O_CLOEXEC;
    file_.reset(::openat(folder.get(), folder.name().c_str(), kFlags | folder.openFlags()));
  }
  const auto deadline = std::chrono::steady_clock::now() + kTimeout;
  while (file_ && ::flock(file_.get(), LOCK_EX | LOCK_NB) != 0) {
    if (errno != EWOULDBLOCK && errno != EINTR) return;
    if (std::chrono::steady_clock::now() > deadline) return;
    std::this_thread::sleep_for(kRetryInterval);
  }
  held_ = static_cast<bool>(file_);
}

}  // namespace platform
