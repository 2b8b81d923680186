// The registry of log targets. Passes each message to every target registered under an identifier.
//
// - Any thread may call `log`. Targets are registered and unregistered on one thread, while no thread logs.
// - Does not own the targets: the owner unregisters a target before it destroys it.

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

  // Calls the target's `onRegisterTarget`, every time, and adds the target under its identifier unless it is there.
  // Returns false for null and if `onRegisterTarget` fails.
  bool registerTarget(LogTargetBase* target);

  // Returns true if no target was ever registered under the identifier. Returns false for null, for a target that is
  // not registered under an identifier that was used, and if the target's `onUnregisterTarget` fails.
  bool unregisterTarget(LogTargetBase* target);

  // Passes the message to the targets of `identifier`, in the order of registration. Does nothing if it is null or
  // unknown.
  //
  // - `timeMs` is the message's time in milliseconds since the epoch, 0 for the current time.
  // - Each target gets a copy of `arguments`. Without `arguments`, `format` is the message itself.
  void log(const char* identifier, Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
           const char* component, const char* extra1, const char* extra2, const char* format, va_list* arguments,
           unsigned long long timeMs);
  void log(const char* identifier, Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
           const char* component, const char* extra1, const char* extra2, const char* format,
           unsigned long long timeMs) {
    log(identifier, level, sessionId, domain, subDomain, component, extra1, extra2, format, nullptr, timeMs);
  }

  // Returns five digits, the first of which is not 0. Two calls within a second return the same id.
  //   => "27403"
  std::string generateSessionId();

 private:
  LoggingCore() = default;

  std::map<std::string, std::vector<LogTargetBase*>, std::less<>> targets_;
};

}  // namespace tarn
