// Logs through `LoggingCore` and adds a target identifier and four texts to every message.
//
// Any thread may log. The texts are set before that, on one thread.

#pragma once

#include <string>

#include "logging/AbstractLogger.h"

namespace tarn {

class LoggingCore;

class Logger : public AbstractLogger {
 public:
  // A null text counts as "".
  Logger(const char* targetIdentifier, const char* sessionId, const char* domain, const char* subDomain,
         const char* component);
  explicit Logger(const char* targetIdentifier);
  virtual ~Logger() = default;

  // Each returns false for null and keeps the text.
  bool setTargetIdentifier(const char* text);
  bool setSessionId(const char* text);
  bool setDomain(const char* text);
  bool setSubDomain(const char* text);
  bool setComponent(const char* text);

  const std::string& getTargetIdentifier() const { return targetIdentifier; }
  const std::string& getSessionId() const { return sessionId; }
  const std::string& getDomain() const { return domain; }
  const std::string& getSubDomain() const { return subDomain; }
  const std::string& getComponent() const { return component; }

  void trace(const char* format, ...) override __attribute__((format(printf, 2, 3)));
  void debug(const char* format, ...) override __attribute__((format(printf, 2, 3)));
  void info(const char* format, ...) override __attribute__((format(printf, 2, 3)));
  void warn(const char* code, const char* format, ...) override __attribute__((format(printf, 3, 4)));
  void error(const char* code, const char* format, ...) override __attribute__((format(printf, 3, 4)));
  void fatal(const char* code, const char* format, ...) override __attribute__((format(printf, 3, 4)));
  void log(Log_Level level, const char* extra1, const char* extra2, const char* format, ...) override
      __attribute__((format(printf, 5, 6)));
  void logit(Log_Level level, const char* extra1, const char* extra2, const char* format, va_list arguments) override;

 private:
  LoggingCore* core_;

  // Names fixed by the interface.
  std::string sessionId;
  std::string domain;
  std::string subDomain;
  std::string component;
  std::string targetIdentifier;
};

}  // namespace tarn
