// The clock that the code under test reads.

#pragma once

#include <chrono>
#include <cstdlib>
#include <ctime>

namespace support {

// The second of now. `std::time` reads a clock that is set forward at every tick only, so for some milliseconds of each
// second it still gives the one before, while `gettimeofday` is in the new one already.
inline std::time_t currentSecond() {
  return std::chrono::system_clock::to_time_t(
      std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now()));
}

// The time zone of the process until the end of the scope.
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
