// A barrier between processes of a test.

#pragma once

#include <sched.h>

#include <atomic>

#include "tests/support/Child.h"

namespace support {

// A reusable barrier for `count` processes, which are forked after its construction.
class Barrier {
 public:
  explicit Barrier(int count) : count_(count) {}

  // Waits without sleeping, so that all processes continue at almost the same time.
  void spin() {
    arrive();
    while (!isComplete())
      ::sched_yield();
  }

  // Returns false if the other processes have not arrived after 30 seconds.
  bool wait() {
    arrive();
    return becomesTrue([this] { return isComplete(); });
  }

 private:
  void arrive() {
    expected_ += count_;
    ++*arrived_;
  }
  bool isComplete() const { return *arrived_ >= expected_; }

  const int count_;
  int expected_ = 0;  // arrivals so far when this round is complete; each process has its own copy
  const Shared<std::atomic<int>> arrived_;
};

}  // namespace support
