// The clock that the code under test reads.

#pragma once

#include <chrono>
#include <ctime>

namespace support {

// The second of now. `std::time` reads a clock that is set forward at every tick only, so for some milliseconds of each
// second it still gives the one before, while `gettimeofday` is in the new one already.
inline std::time_t currentSecond() {
  return std::chrono::system_clock::to_time_t(
      std::chrono::time_point_cast<std::chrono::seconds>(std::chrono::system_clock::now()));
}

}  // namespace support
