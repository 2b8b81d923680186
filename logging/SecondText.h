// The date and time of a second as the locale writes them, remembered for as long as they stay true.
//
// A log line is stamped within the second of the line before it nearly always, and asking for the local time and
// formatting it takes longer than all the rest of the line. Not thread-safe.

#pragma once

#include <ctime>
#include <string>

namespace tarn {

class SecondText {
 public:
  // "%x %X" of strftime in local time, at most 255 bytes; follows the locale and the TZ variable as they are now.
  //   in the "C" locale  => "03/07/14 16:05:09"
  const std::string& at(std::time_t second);

 private:
  bool isStillTrue(std::time_t second, const char* zone) const;

  std::string text_;
  std::time_t second_ = 0;
  std::string zone_;
  bool zoneIsSet_ = false;
  const char* dateForm_ = nullptr;  // only compared: the text itself may have been freed with its locale
};

}  // namespace tarn
