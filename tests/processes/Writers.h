// Processes that log numbered lines, and keep count of those that have been acknowledged: whose call has returned.

#pragma once

#include <array>
#include <atomic>
#include <random>
#include <string>
#include <vector>

#include "tests/processes/Ledger.h"
#include "tests/support/Child.h"

namespace processes {

using Acknowledged = std::atomic<int>;

// Some processes that write the same number of lines, as far as they are allowed to go.
class Writers {
 public:
  Writers(int count, int linesEach);

  // Each may write its lines up to this number.
  void allow(int lines) { *allowed_ = lines; }
  int allowed() const { return *allowed_; }

  // Waits until all have written what they may; false when one of them is stuck.
  bool areDone() const;

  // Waits until all have ended, in good order.
  void expectEnded();

  // That all their lines are there in order. A line that is there again is not lost.
  void expectNoneLost(const Ledger& ledger) const;
  void expectNoneTwice(const Ledger& ledger) const;

 private:
  static constexpr int most = 8;

  int linesEach_;
  support::Shared<std::atomic<int>> allowed_;
  support::Shared<std::array<Acknowledged, most>> acknowledged_;
  std::vector<support::Child> processes_;
};

// Writers that are killed while they write.
class Victims {
 public:
  // Starts one, and waits until it has registered with the log.
  void add();

  // Kills the oldest as soon as it has written some number of lines.
  void killOne();

  // That all that the dead had been told is there, once and in order, and at most one line more.
  void expectNoneLostOrTwice(const Ledger& ledger) const;

  int count() const { return started_; }

 private:
  static constexpr int most = 1000;
  static constexpr int linesEach = 100;

  Acknowledged& acknowledgedBy(int victim) const { return (*acknowledged_)[static_cast<std::size_t>(victim)]; }

  int started_ = 0;
  int killed_ = 0;
  std::mt19937 random_{std::random_device{}()};
  support::Shared<std::array<Acknowledged, most>> acknowledged_;
  std::vector<support::Child> processes_;
};

}  // namespace processes
