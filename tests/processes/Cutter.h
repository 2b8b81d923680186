// Cuts the log file at will: a target whose hour is over whenever it is told so.

#pragma once

#include <chrono>
#include <ctime>
#include <string>
#include <thread>

#include "logging/LogTargetDefault.h"
#include "tests/processes/Ledger.h"
#include "tests/support/Clock.h"

namespace processes {

class Cutter {
 public:
  explicit Cutter(const std::string& folder) : target_("cutter") {
    target_.setLogFile("Kelvo.log", folder.c_str());
    target_.onRegisterTarget();
  }
  Cutter(const Cutter&) = delete;
  Cutter& operator=(const Cutter&) = delete;
  ~Cutter() { target_.onUnregisterTarget(); }

  // Lets the second of the last cut pass, since an archive is named after its second and would be overwritten.
  void awaitAnotherSecond() {
    while (support::currentSecond() <= lastCut_)
      ::sched_yield();
  }

  // Writes a line that is stamped two hours after the last one, and one that finds the check due.
  void cut() {
    timeMs_ += 2 * 3600 * 1000;
    write();
    write();
    lastCut_ = support::currentSecond();
  }

 private:
  void write() {
    target_.writeLog(tarn::FATAL, "", "", "", "", "", "", messageOf("cutter", ++lines_).c_str(), nullptr, timeMs_);
  }

  tarn::LogTargetDefault target_;
  std::time_t lastCut_ = support::currentSecond();
  unsigned long long timeMs_ = static_cast<unsigned long long>(lastCut_) * 1000;
  int lines_ = 0;
};

}  // namespace processes
