// How grave a message is.

#pragma once

namespace tarn {

// A target writes a message when its own level is less than or equal to the message's. Any `int` may be passed in one;
// a value that is not named here is printed as "ALL".
enum Log_Level : int {
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
