// Processes that log numbered lines and count the acknowledged ones. A line is acknowledged when its call has returned.

#pragma once

#include <array>
#include <atomic>
#include <random>
#include <string>
#include <vector>

#include "tests/processes/LogReader.h"
#include "tests/support/Child.h"

namespace processes {

using Acknowledged = std::atomic<int>;

// Processes that write the same number of lines each, up to a limit that rises.
class Writers {
 public:
  Writers(int count, int linesEach);

  // Raises the limit of every process to this number of lines.
  void allow(int lines) { *allowed_ = lines; }
  int allowed() const { return *allowed_; }

  // Waits until every process has written up to the limit. Returns false if one does not get there.
  bool waitUntilDone() const;

  // Waits for the end of the processes, and expects exit status 0.
  void expectEnded();

  // Expects every line, in order. Repeated lines are allowed.
  void expectNoneLost(const LogLines& found) const;
  void expectNoneRepeated(const LogLines& found) const;

 private:
  static constexpr int kMaxWriters = 8;

  int linesEach_;
  support::Shared<std::atomic<int>> allowed_;
  support::Shared<std::array<Acknowledged, kMaxWriters>> acknowledged_;
  std::vector<support::Child> processes_;
};

// Processes that are killed while they write.
class KilledWriters {
 public:
  // Starts a process and waits until it has written a line.
  void add();

  // Kills the oldest process after a random number of lines.
  void killOne();

  // Expects every acknowledged line once and in order, and at most one more line per process.
  void expectNoneLostOrRepeated(const LogLines& found) const;

  int count() const { return started_; }

 private:
  static constexpr int kMaxWriters = 1000;
  static constexpr int kLinesEach = 100;

  Acknowledged& acknowledgedBy(int writer) const { return (*acknowledged_)[static_cast<std::size_t>(writer)]; }

  int started_ = 0;
  int killed_ = 0;
  std::mt19937 random_{std::random_device{}()};
  support::Shared<std::array<Acknowledged, kMaxWriters>> acknowledged_;
  std::vector<support::Child> processes_;
};

}  // namespace processes
