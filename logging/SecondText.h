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
  // "%x %X" of strftime in local time, at most 250 bytes. Follows the locale at once, and the zone as soon as anybody
  // has called tzset or localtime, or else with the next second.
  //   in the "C" locale  => "03/07/14 16:05:09"
  const std::string& at(std::time_t second);

 private:
  // What a text depends on besides its second. The addresses are only compared: what they point to may be gone.
  struct Setting {
    const void* dateForm;
    const void* zoneName;
    const void* summerZoneName;
    long secondsWest;
  };

  static Setting presentSetting();
  bool isStillTrue(std::time_t second) const;

  std::string text_;
  std::time_t second_ = 0;
  Setting setting_{};
};

}  // namespace tarn
