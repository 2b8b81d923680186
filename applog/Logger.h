// The application's one log: formats messages and writes them to "Kelvo.log" in the user's log folder.
//
// Every line is handed on while a mutex of the user's is held, so lines of several processes never mix; a call waits
// for it as long as needed. Without the mutex (no home folder, no semaphores left) messages are dropped without a word.
// Logging may be done from any thread once `setLogLevel` has been called, until the process begins to end; nothing is
// written before that. A child of `fork` that logs or exits in order shares its parent's place in the locks and gives
// it up for both: let it leave through `exec` or `_exit`.

#pragma once

#include <cstdarg>
#include <cstddef>
#include <fstream>
#include <memory>
#include <string>

#include "applog/OVNLoggingFileOperationFlag.h"
#include "logging/LogLevel.h"
#include "logging/LogTargetDefault.h"
#include "logging/Logger.h"

// How much is written: each level all of the former and more. Any `int` may be passed in one.
enum Log_Level : int {
  Log_Level_Fatal = 1,
  Log_Level_Error = 2,
  Log_Level_Warn = 3,
  Log_Level_Info = 4,
  Log_Level_Debug = 5,
  Log_Level_Trace = 6,
};

class Logger : public tarn::Logger {
 public:
  // Made on first use, destroyed at the end of the process.
  static Logger* getInstance();

  // Does nothing; true.
  bool finalize();

  // Sets what is written from now on. A level that has no name leaves it as it is. Levels once enabled here stay
  // enabled: a less talkative level is kept by the target. `component` and `context`, when not null, are carried by
  // every line; a component is announced together with the build and the level as given.
  void setLogLevel(Log_Level level, const char* component, const char* context);

  // Each logs one message, its first 1022 characters. `component` names the calling module and must not be null. A
  // level that is not enabled costs a test, and its arguments are not formatted.
  void logTrace(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logDebug(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logInfo(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logWarn(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logError(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));
  void logFatal(const char* component, const char* format, ...) __attribute__((format(printf, 3, 4)));

  // Logs one line of the embedded user interface, "LEVEL|||component|||message", of any length and level: the target
  // alone decides what is written. One line at a time; not null. The one function of this class that throws: see
  // `parseMessageFromSwf`.
  void logSimpleMessage(const char* line);

  // Splits such a line. An unknown level word is INFO; the words are upper-case. A missing separator makes the
  // positions wrap around, so that the message begins at the line's third character; a line of fewer than two
  // characters without a separator throws std::out_of_range, and the outputs keep what they had.
  //   "ERROR|||ui|||a|||b"  => ERROR, "ui", "a|||b"
  //   "WARN|||only"         => WARN, "only", "RN|||only"
  //   "plain text"          => INFO, "ain text", "ain text"
  void parseMessageFromSwf(const char* line, tarn::Log_Level& level, std::string& component, std::string& message);

  // The level of the target, which flag files in the log folder may have raised.
  tarn::Log_Level getCurrentLogLevel() const;

  // The local time as `ctime` writes it, without the newline, in `ctime`'s own buffer: not thread-safe.
  static char* getCurrentTime();

  // Copies; true.
  bool GetNativeStringFromString(const std::string& in, std::string& out);

  // Formats at most size - 2 characters and a terminator; the answer is that of `vsnprintf`, or 0 without arguments.
  int getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments)
      __attribute__((format(printf, 4, 0)));

  // The one way out: writes a finished text of any length, with its six context texts.
  void sendMessageToTARNLogger(tarn::Log_Level level, const char* c1, const char* c2, const char* c3, const char* c4,
                               const char* c5, const char* c6, const char* text);

 private:
  Logger();
  ~Logger() override;

  void enableLevelsFrom(tarn::Log_Level lowest);
  void announce(Log_Level level);
  void sendText(tarn::Log_Level level, const std::string& component, const char* text);
  void send(tarn::Log_Level level, const char* component, const char* format, va_list* arguments)
      __attribute__((format(printf, 4, 0)));

  static Logger* pLogger;  // always null; name and place fixed by the binary interface

  std::basic_fstream<wchar_t> wideStream;  // never opened; name and place fixed by the binary interface
  std::unique_ptr<tarn::LogTargetDefault> target;
  std::unique_ptr<OVNLoggingFileOperationFlag> fileFlag;
  bool traceEnabled = false;
  bool debugEnabled = false;
  bool infoEnabled = false;
  bool warnEnabled = false;
  bool errorEnabled = false;
  bool fatalEnabled = false;
};
