// Replaces the result of `gettimeofday`. Requires FakeClock.cpp.

#pragma once

#include <sys/time.h>

#include <optional>
#include <string>

#include "tests/support/Clock.h"

namespace support {

// Empty means the real time.
inline std::optional<timeval> fakeTimeOfDay;

// Sets the time for a scope: 7 March 2014, 04:35:09 local time, which is 6 March, 23:05:09 UTC.
class FakeLocalTime {
 public:
  FakeLocalTime() { fakeTimeOfDay = timeval{1394147109, 0}; }
  FakeLocalTime(const FakeLocalTime&) = delete;
  FakeLocalTime& operator=(const FakeLocalTime&) = delete;
  ~FakeLocalTime() { fakeTimeOfDay.reset(); }

  const std::string stamp = "03-07-2014 04-35-09";

 private:
  const TimeZone zone_{"XYZ-5:30"};
};

}  // namespace support
