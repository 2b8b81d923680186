// Brings processes of a test together.

#pragma once

#include <sched.h>

#include <atomic>

#include "tests/support/Child.h"

namespace support {

// Where so many processes, forked while it stands, come together as often as they like.
class Meeting {
 public:
  explicit Meeting(int everybody) : everybody_(everybody) {}

  // Goes on at the same moment as the others: keeps its processor until all have come.
  void startTogether() {
    arrive();
    while (!isComplete())
      ::sched_yield();
  }

  // False when the others have not come after half a minute.
  bool meet() {
    arrive();
    return comesTrue([this] { return isComplete(); });
  }

 private:
  void arrive() {
    awaited_ += everybody_;
    ++*arrived_;
  }
  bool isComplete() const { return *arrived_ >= awaited_; }

  const int everybody_;
  int awaited_ = 0;  // each process counts for itself
  const Shared<std::atomic<int>> arrived_;
};

}  // namespace support
