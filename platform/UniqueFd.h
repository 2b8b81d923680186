// Owns a file descriptor and closes it once.

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
  UniqueFd(UniqueFd&& other) noexcept : fd_(std::exchange(other.fd_, kNone)) {}
  UniqueFd& operator=(UniqueFd&& other) noexcept {
    reset(std::exchange(other.fd_, kNone));
    return *this;
  }
  ~UniqueFd() { reset(); }

  // Returns -1 if it is empty.
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ != kNone; }

  // Passes ownership to the caller.
  int release() { return std::exchange(fd_, kNone); }

  void reset(int fd = kNone) {
    const int previous = std::exchange(fd_, fd);
    if (previous != kNone) (void)::close(previous);  // closed even if `close` fails
  }

 private:
  static constexpr int kNone = -1;
  int fd_ = kNone;
};

// Writes all bytes; continues after signals and partial writes. On the first error returns false and sets `errno`.
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
