// Limits how long a thread waits for locks: `limit`, for all the locks of one operation together.
//
// - The locks of the log are open to every user: a user who takes one and keeps it must not stop other programs.
// - While a scope exists, its thread has one deadline, which the first wait sets. Scopes inside it share that deadline.
// - Without a scope each wait has a deadline of its own.

#pragma once

#include <chrono>

namespace platform {

class WaitLimit {
 public:
  using Clock = std::chrono::steady_clock;

  // Only tests change it, so that no line is lost on a slow machine. They do so before they start threads.
  static inline std::chrono::seconds limit{2};

  WaitLimit() : isOutermost_(state == State::kNoScope) {
    if (isOutermost_) state = State::kNotWaited;
  }
  WaitLimit(const WaitLimit&) = delete;
  WaitLimit& operator=(const WaitLimit&) = delete;
  ~WaitLimit() {
    if (isOutermost_) state = State::kNoScope;
  }

  // Returns when the calling thread must stop waiting.
  static Clock::time_point deadline();

 private:
  enum class State { kNoScope, kNotWaited, kWaited };

  static inline thread_local State state = State::kNoScope;
  static inline thread_local Clock::time_point sharedDeadline;

  bool isOutermost_;
};

}  // namespace platform
