// The user's last press of a button or key, which permits one action of the page within five seconds.
//
// Times are in microseconds of a monotonic clock. Plain C++.

#pragma once

#include <cstdint>

class FreshPress {
 public:
  void pressed(std::int64_t now) {
    time_ = now;
    used_ = false;
  }

  // Returns whether the action is permitted, and counts it.
  bool take(std::int64_t now) {
    if (used_ || now - time_ > kMaxAge) return false;
    used_ = true;
    return true;
  }

 private:
  static constexpr std::int64_t kMaxAge = 5'000'000;

  std::int64_t time_ = 0;
  bool used_ = true;
};
