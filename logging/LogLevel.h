// Severity of a log message.

#pragma once

namespace tarn {

// A target writes a message if the target's level is less than or equal to the message's level. Any `int` is valid; a
// value without a name here is printed as "ALL".
enum Log_Level : int {  // names fixed by the interface
  ALL = 0,
  TRACE = 10,
  DEBUG = 20,
  INFO = 30,
  WARN = 40,
  ERROR = 50,
  FATAL = 60,
  NONE = 70,
};

}  // namespace tarn
