// Owns a file descriptor and closes it once; writes whole texts to one.

#pragma once

#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string_view>
#include <utility>

namespace platform {

class UniqueFd {
 public:
  UniqueFd() = default;
  explicit UniqueFd(int fd) : fd_(fd) {}
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, none)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd_, none));
    return *this;
  }
  ~UniqueFd() { reset(); }

  // -1 when there is none.
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ != none; }

  // Gives the descriptor to the caller.
  int release() { return std::exchange(fd_, none); }

  void reset(int fd = none) {
    const int former = std::exchange(fd_, fd);
    if (former != none) (void)::close(former);  // the descriptor is gone, whatever close says
  }

 private:
  static constexpr int none = -1;
  int fd_ = none;
};

// Goes on after signals and partial writes. False, with `errno`, at the first error.
inline bool writeAll(int fd, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(fd, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return true;
}

}  // namespace platform
