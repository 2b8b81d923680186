// What every log target has: its identifier, its file and the level from which on it writes.
//
// Configured on one thread before it is registered. Files in the user's log folder raise the level without any change
// of configuration; their contents do not matter, and a folder of that name does not count. For "Kelvo.log", the first
// that exists decides:
//   Kelvo.trace  => TRACE                  Kelvo.debug  => DEBUG, unless a more talkative level was asked for
//   qsu.trace    => TRACE                  qsu.debug    => DEBUG, unless a more talkative level was asked for

#pragma once

#include <cstdarg>
#include <cstdint>
#include <fstream>
#include <mutex>
#include <string>

#include "logging/LogLevel.h"

namespace tarn {

class LogTargetBase {
 public:
  LogTargetBase();
  explicit LogTargetBase(const char* identifier);
  LogTargetBase(const LogTargetBase&) = delete;
  LogTargetBase& operator=(const LogTargetBase&) = delete;

  // Opens the log file on `handle` for appending, creating it when it is missing.
  virtual bool SetStreamHandle(std::fstream& handle) = 0;
  virtual ~LogTargetBase() = default;

  // Called by the core: the first at every registration, and a refusal ends it; the second when the last one is undone.
  virtual bool onRegisterTarget() = 0;
  virtual bool onUnregisterTarget() = 0;

  // Writes one message; null texts count as "". With null `arguments`, `format` is the finished message.
  virtual bool writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                        const char* component, const char* extra1, const char* extra2, const char* format,
                        va_list* arguments, unsigned long long timeMs) = 0;

  // Separator " | ", file "TARN.log", no path yet, level INFO, not registered.
  void setDefaultValues();

  // False, and no change, for null.
  bool setIdentifier(const char* text);
  const std::string& getIdentifier() const { return identifier; }

  // Looks for the flag files named after the log file, so it is called again after `setLogFile`.
  void setLogLevel(Log_Level level);
  Log_Level getLogLevel() const { return logLevel; }

  // Places the log file, and proves that it can be opened by creating it. A null or empty name keeps the current one, a
  // null or empty folder means the user's log folder, which is created. A given folder is not, and a given name must
  // have no folder part. On failure the answer is false and the target can no longer be registered. A target that is
  // registered goes on in the new file at once.
  bool setLogFile(const char* name, const char* folder);

  // How many times the target is registered. Changed under a mutex, read without it.
  void incrementRefCount();
  void decrementRefCount();
  std::uint32_t getRefCount() const { return refCount; }

 protected:
  std::string identifier;
  std::string separator;
  std::string fileName;
  std::string filePath;
  Log_Level logLevel = INFO;
  std::fstream stream;
  bool fileUsable = true;
  bool registered = false;
  std::uint32_t refCount = 0;
  std::mutex mutex;

 private:
  bool placeFile(const char* name, const char* folder);
  void lowerLevelToDebug();
};

}  // namespace tarn
