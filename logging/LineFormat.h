// Formats the timestamp of a log line, and recognizes messages that the log replaces.
//
// `LineFormat.cpp` also defines the members of `LogTargetDefault` that format a line.

#pragma once

#include <ctime>
#include <string>

namespace tarn {

// Whether a message may contain an access token, such as a JSON Web Token: "eyJ" and, from there on, ".eyJ". The log
// replaces such a message.
bool containsToken(const char* message);

// Caches the text because consecutive lines mostly have the same second, and formatting the local time takes longer
// than the rest of a line. Not thread-safe.
class TimestampCache {
 public:
  // Returns "%x %X" of `strftime` in local time, at most 250 bytes.
  //
  // - A change of the locale takes effect immediately.
  // - A change of the time zone takes effect after the next call of `tzset` or `localtime`, or with the next second.
  //
  //   in the "C" locale => "03/07/14 16:05:09"
  const std::string& at(std::time_t second);

 private:
  // What the text depends on besides the second. The pointers are only compared: their targets may no longer exist.
  struct Settings {
    const void* dateFormat;
    const void* zoneName;
    const void* daylightZoneName;
    long secondsWest;
  };

  static Settings currentSettings();
  bool isValidFor(std::time_t second) const;

  std::string text_;
  std::time_t second_ = 0;
  Settings settings_{};
};

}  // namespace tarn
