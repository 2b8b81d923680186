// Base of the log targets: identifier, log file and level.
//
// - Configured on one thread, before registration.
// - A flag file in the user's log folder changes the level. Its contents do not matter, and a folder does not count.
//   The first one that exists decides. For the log file "Kelvo.log":
//     Kelvo.trace => TRACE
//     Kelvo.debug => DEBUG, or the requested level if it is lower
//     qsu.trace   => TRACE
//     qsu.debug   => DEBUG, or the requested level if it is lower
// - Names of the protected members are fixed by the interface.

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

  // Opens the log file on `handle` for appending. Creates the file if it does not exist.
  virtual bool SetStreamHandle(std::fstream& handle) = 0;
  virtual ~LogTargetBase() = default;

  // `LoggingCore` calls `onRegisterTarget` at every registration, which fails if the result is false, and
  // `onUnregisterTarget` when the reference count drops to 0.
  virtual bool onRegisterTarget() = 0;
  virtual bool onUnregisterTarget() = 0;

  // Writes one message. Null texts count as "". If `arguments` is null, `format` is the message itself.
  virtual bool writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                        const char* component, const char* extra1, const char* extra2, const char* format,
                        va_list* arguments, unsigned long long timeMs) = 0;

  // Separator " | ", file name "TARN.log", empty path, level INFO, not registered.
  void setDefaultValues();

  // Returns false for null and keeps the identifier.
  bool setIdentifier(const char* text);
  const std::string& getIdentifier() const { return identifier; }

  // Applies the flag files. Two of them are named after the log file, so call this after `setLogFile`.
  void setLogLevel(Log_Level level);
  Log_Level getLogLevel() const { return logLevel; }

  // Sets the path of the log file, and creates the file.
  //
  // - A null or empty name keeps the current name. Another name must not have a folder part.
  // - A null or empty folder means the user's log folder, which is created. Another folder must exist.
  // - On failure the target cannot be registered until a later call succeeds.
  // - A registered target writes to the new file from now on.
  bool setLogFile(const char* name, const char* folder);

  // The number of registrations. `mutex` protects the changes, not the read.
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
  bool openLogFile(const char* name, const char* folder);
  void limitLevelToDebug();
};

}  // namespace tarn
