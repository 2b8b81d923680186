// What code that logs may ask of a logger. Formats are those of `printf`; a null format logs nothing.

#pragma once

#include <cstdarg>

#include "logging/LogLevel.h"

namespace tarn {

class AbstractLogger {
 public:
  virtual void trace(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
  virtual void debug(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
  virtual void info(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;

  // `code` is an error code of the caller's; null counts as "".
  virtual void warn(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;
  virtual void error(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;
  virtual void fatal(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;

  // The two extra texts become fields of the line; null counts as "".
  virtual void log(Log_Level level, const char* extra1, const char* extra2, const char* format, ...)
      __attribute__((format(printf, 5, 6))) = 0;
  virtual void logit(Log_Level level, const char* extra1, const char* extra2, const char* format,
                     va_list arguments) = 0;

 protected:
  ~AbstractLogger() = default;
};

}  // namespace tarn
