// The registry of log targets: hands a message to every target registered under an identifier.
//
// `log` may be called from any thread; targets are registered and unregistered on one thread, while nobody logs. The
// core owns no target: an owner unregisters a target before destroying it.

#pragma once

#include <cstdarg>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "logging/LogLevel.h"

namespace tarn {

class LogTargetBase;

class LoggingCore {
 public:
  static LoggingCore* getInstance();

  // Prepares the target with `onRegisterTarget`, every time, and lists it once under its identifier. False for null and
  // when the target refuses.
  bool registerTarget(LogTargetBase* target);

  // False for null, for a target that was never registered under an identifier that others use, and when the target's
  // `onUnregisterTarget` fails; an identifier that nobody ever used is no failure.
  bool unregisterTarget(LogTargetBase* target);

  // Hands the message to the targets of `identifier` in the order of their registration; to nobody when it is null or
  // unknown. `timeMs` is the message's time in milliseconds since the epoch, 0 for now. `arguments` stay usable: each
  // target reads a copy. Without arguments `format` is the finished message.
  void log(const char* identifier, Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
           const char* component, const char* extra1, const char* extra2, const char* format, va_list* arguments,
           unsigned long long timeMs);
  void log(const char* identifier, Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
           const char* component, const char* extra1, const char* extra2, const char* format,
           unsigned long long timeMs);

  // Five digits, the first of them not 0; the same within a second.  => "27403"
  std::string generateSessionId();

 private:
  LoggingCore() = default;

  std::map<std::string, std::vector<LogTargetBase*>, std::less<>> targets;
};

}  // namespace tarn
