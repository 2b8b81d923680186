// Rotates the log file on request.

#pragma once

#include <sched.h>

#include <ctime>
#include <string>

#include "logging/LogTargetDefault.h"
#include "tests/processes/LogReader.h"
#include "tests/support/Clock.h"

namespace processes {

class Rotator {
 public:
  explicit Rotator(const std::string& folder) : target_("rotator") {
    target_.setLogFile("Kelvo.log", folder.c_str());
    target_.onRegisterTarget();
  }
  Rotator(const Rotator&) = delete;
  Rotator& operator=(const Rotator&) = delete;
  ~Rotator() { target_.onUnregisterTarget(); }

  // Waits until the second of the last rotation is over: an archive is named after its second, and a second rotation in
  // it would overwrite the archive.
  void waitForNextSecond() {
    while (support::currentSecond() <= lastRotation_)
      ::sched_yield();
  }

  // Writes a line whose time is two hours after the last one, and a line that triggers the hourly size check.
  void rotate() {
    timeMs_ += 2 * 3600 * 1000;
    write();
    write();
    lastRotation_ = support::currentSecond();
  }

 private:
  void write() {
    target_.writeLog(tarn::FATAL, "", "", "", "", "", "", messageOf("rotator", ++lines_).c_str(), nullptr, timeMs_);
  }

  tarn::LogTargetDefault target_;
  std::time_t lastRotation_ = support::currentSecond();
  unsigned long long timeMs_ = static_cast<unsigned long long>(lastRotation_) * 1000;
  int lines_ = 0;
};

}  // namespace processes
