// The application's logger: formats messages and writes them to "Kelvo.log" in the user's log folder.
//
// - Every line is written while the user's `OVNLoggingFileOperationFlag` is held, so that lines of several processes do
//   not mix. A call waits at most 2 seconds for all locks together; while another process keeps one of them, only the
//   first call waits that long. Then the message is dropped, and the next line in the log says how many are missing.
// - If the flag does not exist (no home folder, no free semaphores), messages are dropped, and a call tries to create
//   it once a minute. If another user has created it, messages are written without it.
// - If the log cannot be opened, messages are dropped, and a call tries to open it once a minute.
// - Before the first call of `setLogLevel`, `logTrace` to `logFatal` write nothing. After it, any thread may log at any
//   time, also while the process exits: from then on messages are dropped.
// - A child of `fork` may log, and may leave through `exit`.
// - A signal handler must not log: the interrupted thread may hold the locks, or be inside `malloc`.

#pragma once

#include <atomic>
#include <chrono>
#include <cstdarg>
#include <cstddef>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

#include "applog/OVNLoggingFileOperationFlag.h"
#include "logging/LogLevel.h"
#include "logging/LogTargetDefault.h"
#include "logging/Logger.h"

// Verbosity: each level includes the levels before it. Any `int` is valid.
enum Log_Level : int {  // names fixed by the interface
  Log_Level_Fatal = 1,
  Log_Level_Error = 2,
  Log_Level_Warn = 3,
  Log_Level_Info = 4,
  Log_Level_Debug = 5,
  Log_Level_Trace = 6,
};

class Logger : public tarn::Logger {
 public:
  // Returns the instance, which is created at the first call and never destroyed. At process exit it closes the locks.
  static Logger* getInstance();

  // Does nothing. Returns true.
  bool finalize();

  // Sets the level of the target and enables the levels to log.
  //
  // - A value without a name keeps the target's level.
  // - An enabled level stays enabled. After a change to a less verbose level, the target drops the messages.
  // - `component` and `context` become fields of every line, unless they are null.
  // - If `component` is not null, logs the build version and `level`.
  void setLogLevel(Log_Level level, const char* component, const char* context);

  // Each logs the first 1022 characters of a message. `component` names the calling module and must not be null. If the
  // level is not enabled, the arguments are not formatted.
  void logTrace(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logDebug(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logInfo(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logWarn(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logError(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logFatal(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));

  // Logs one line of the embedded user interface: "LEVEL|||component|||message".
  //
  // - The line has any length and must not be null.
  // - Only the target's level filters it, not the enabled levels.
  // - Throws what `parseMessageFromSwf` throws.
  void logSimpleMessage(const char* line);

  // Splits such a line.
  //
  // - Level words are upper-case. An unknown level word means INFO.
  // - If a separator is missing, positions wrap around, and the message starts at the line's third character.
  // - A line of fewer than two characters throws std::out_of_range and leaves the outputs unchanged.
  //
  //   "ERROR|||ui|||a|||b" => ERROR, "ui", "a|||b"
  //   "WARN|||only"        => WARN, "only", "RN|||only"
  //   "plain text"         => INFO, "ain text", "ain text"
  void parseMessageFromSwf(const char* line, tarn::Log_Level& level, std::string& component, std::string& message);

  // Returns the target's level, which flag files in the log folder may have lowered.
  tarn::Log_Level getCurrentLogLevel() const;

  // Returns the local time in the format of `ctime`, without the newline, in the buffer of `ctime`. Not thread-safe.
  static char* getCurrentTime();

  // Copies `in` to `out`. Returns true.
  bool GetNativeStringFromString(const std::string& in, std::string& out);

  // Formats at most size - 2 characters and a terminator. Returns the result of `vsnprintf`, 0 if `arguments` is null.
  int getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments)
      __attribute__((format(printf, 4, 0)));

  // Writes a text of any length, without formatting it, and its six context texts. All other functions log through it.
  void sendMessageToTARNLogger(tarn::Log_Level level, const char* c1, const char* c2, const char* c3, const char* c4,
                               const char* c5, const char* c6, const char* text);

 private:
  class LineScope;

  Logger();
  ~Logger() override = default;

  void close();
  bool waitForThreads(std::unique_lock<std::timed_mutex>& lock);
  bool startLine();
  void attachFlag();
  static void beforeFork();
  static void afterForkInParent();
  static void afterForkInChild();

  // Opens the log and registers the target. Called while the flag is held, but for the first time.
  void registerTarget();

  // Tries again after a failure, at most once a minute.
  void registerTargetWhenDue();

  void enableLevelsFrom(tarn::Log_Level lowest);
  void logBuildAndLevel(Log_Level level);
  void sendText(tarn::Log_Level level, const std::string& component, const char* text);
  void formatAndSend(tarn::Log_Level level, const char* component, const char* format, va_list* arguments)
      __attribute__((format(printf, 4, 0)));

  static Logger* pLogger;  // always null; name fixed by the interface

  std::basic_fstream<wchar_t> wideStream_;  // never opened; place fixed by the interface

  // Names fixed by the interface.
  std::unique_ptr<tarn::LogTargetDefault> target;
  std::unique_ptr<OVNLoggingFileOperationFlag> fileFlag;

  // Held for each line, so that a fork copies no half-written line and the exit closes no file in use.
  std::timed_mutex mutex_;
  std::chrono::steady_clock::time_point nextAttach_{};
  bool flagIsForeign_ = false;
  std::atomic<bool> isClosed_{false};
  bool targetIsRegistered_ = false;
  std::chrono::steady_clock::time_point nextRegistration_{};

  bool traceEnabled_ = false;
  bool debugEnabled_ = false;
  bool infoEnabled_ = false;
  bool warnEnabled_ = false;
  bool errorEnabled_ = false;
  bool fatalEnabled_ = false;
};
