// The clock and the time zone that the code under test reads.

#pragma once

#include <chrono>
#include <cstdlib>
#include <ctime>

namespace support {

// Returns the current time in seconds. `std::time` reads a coarse clock, which is up to one tick behind `gettimeofday`:
// for some milliseconds of each second it returns the previous second.
inline std::time_t currentSecond() {
  return std::chrono::system_clock::to_time_t(
      std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now()));
}

// Sets the time zone of the process for a scope.
class TimeZone {
 public:
  explicit TimeZone(const char* zone) {
    ::setenv("TZ", zone, 1);
    ::tzset();
  }
  TimeZone(const TimeZone&) = delete;
  TimeZone& operator=(const TimeZone&) = delete;
  ~TimeZone() {
    ::unsetenv("TZ");
    ::tzset();
  }
};

}  // namespace support
