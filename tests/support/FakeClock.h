// Replaces what `gettimeofday` returns, for a test that links FakeClock.cpp.

#pragma once

#include <sys/time.h>

#include <optional>
#include <string>

#include "tests/support/Clock.h"

namespace support {

// Empty: the real time.
inline std::optional<timeval> fakeTimeOfDay;

// Until the end of the scope it is 04:35:09 on 7 March 2014 in local time, and 23:05:09 on 6 March in UTC.
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
