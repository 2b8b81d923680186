// Interface of a logger.
//
// - Formats are those of `printf`. A null format logs nothing.
// - Null for any other text counts as "".

#pragma once

#include <cstdarg>

#include "logging/LogLevel.h"

namespace tarn {

class AbstractLogger {
 public:
  virtual void trace(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
  virtual void debug(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;
  virtual void info(const char* format, ...) __attribute__((format(printf, 2, 3))) = 0;

  // `code` is the caller's error code.
  virtual void warn(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;
  virtual void error(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;
  virtual void fatal(const char* code, const char* format, ...) __attribute__((format(printf, 3, 4))) = 0;

  // `extra1` and `extra2` become fields of the log line.
  virtual void log(Log_Level level, const char* extra1, const char* extra2, const char* format, ...)
      __attribute__((format(printf, 5, 6))) = 0;
  virtual void logit(Log_Level level, const char* extra1, const char* extra2, const char* format,
                     va_list arguments) = 0;

 protected:
  ~AbstractLogger() = default;
};

}  // namespace tarn
