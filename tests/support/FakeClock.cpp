#include "tests/support/FakeClock.h"

#include <ctime>

// Replaces the function of the C library.
extern "C" int gettimeofday(timeval* time, void*) noexcept {
  timespec now{};
  const int result = ::clock_gettime(CLOCK_REALTIME, &now);
  *time = support::fakeTimeOfDay.value_or(timeval{now.tv_sec, now.tv_nsec / 1000});
  return result;
}
