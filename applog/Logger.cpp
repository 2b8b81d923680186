#include "applog/Logger.h"

#include <pthread.h>

#include <cerrno>
#include <chrono>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <string_view>

#include "logging/Helpers.h"
#include "logging/LoggingCore.h"
#include "platform/CancellationScope.h"
#include "platform/Users.h"
#include "platform/WaitLimit.h"

namespace {

constexpr char kTargetIdentifier[] = "QSU";
constexpr char kLogFileName[] = "Kelvo.log";
constexpr char kBuildVersion[] = SVO_VERSION;
constexpr std::size_t kMessageSize = 1024;
constexpr std::string_view kSeparator = "|||";
constexpr std::chrono::minutes kRetryInterval{1};

Logger* forkedLogger = nullptr;
thread_local bool turnBeforeFork = false;  // whether this thread held the logger's mutex when it forked

tarn::Log_Level levelOf(std::string_view word) {
  if (word == "INFO") return tarn::INFO;
  if (word == "DEBUG") return tarn::DEBUG;
  if (word == "ERROR") return tarn::ERROR;
  if (word == "WARN") return tarn::WARN;
  if (word == "FATAL") return tarn::FATAL;
  if (word == "TRACE") return tarn::TRACE;
  return tarn::INFO;
}

}  // namespace

Logger* Logger::pLogger = nullptr;

// Holds what a line needs for a scope: the turn of this thread and that of this process.
class Logger::LineScope {
 public:
  explicit LineScope(Logger& logger)
      : logger_(logger),
        turn_(logger.mutex_, std::try_to_lock),
        held_(logger.waitForThreads(turn_) && logger.startLine()) {}
  LineScope(const LineScope&) = delete;
  LineScope& operator=(const LineScope&) = delete;
  ~LineScope() {
    if (held_) logger_.fileFlag->endFileOperation();
  }
  explicit operator bool() const { return held_; }

 private:
  Logger& logger_;
  std::unique_lock<std::timed_mutex> turn_;
  const bool held_;
};

// Never destroyed: threads and other static objects may log until the process has ended.
Logger* Logger::getInstance() {
  static Logger* const instance = [] {
    auto* const created = new Logger;
    (void)std::atexit([] { getInstance()->close(); });
    return created;
  }();
  return instance;
}

Logger::Logger() : tarn::Logger(kTargetIdentifier) {
  const platform::CancellationScope scope;
  const platform::WaitLimit limit;
  // Without the folder nothing is logged, and the program runs on.
  (void)platform::makeLogsFolder(platform::homeFolderOfConsoleUser());

  fileFlag.reset(new OVNLoggingFileOperationFlag);
  fileFlag->semid = -1;
  fileFlag->held = false;
  attachFlag();

  target = std::make_unique<tarn::LogTargetDefault>(kTargetIdentifier);
  target->setLogLevel(tarn::INFO);
  registerTarget();
  setDomain(kTargetIdentifier);

  forkedLogger = this;
  (void)::pthread_atfork(beforeFork, afterForkInParent, afterForkInChild);
}

void Logger::registerTarget() {
  target->setLogFile(kLogFileName, "");
  targetIsRegistered_ = tarn::LoggingCore::getInstance()->registerTarget(target.get());
}

void Logger::registerTargetWhenDue() {
  const auto now = std::chrono::steady_clock::now();
  if (now < nextRegistration_) return;
  nextRegistration_ = now + kRetryInterval;
  const platform::CancellationScope scope;
  registerTarget();
}

void Logger::close() {
  const platform::WaitLimit limit;
  isClosed_ = true;
  std::unique_lock<std::timed_mutex> turn(mutex_, std::try_to_lock);
  if (!waitForThreads(turn)) return;  // a thread still writes, or this one exits inside a line
  pLogger = nullptr;
  fileFlag->finalizeFlag();
  target->closeForExit();  // it stays registered, because threads may use it through the base class
}

// By the system's clock: the thread sanitizer does not see a wait by the steady one.
bool Logger::waitForThreads(std::unique_lock<std::timed_mutex>& lock) {
  if (lock.owns_lock()) return true;
  const auto left = platform::WaitLimit::deadline() - platform::WaitLimit::Clock::now();
  return lock.try_lock_until(std::chrono::system_clock::now() + left);
}

// Inline: after a system call every return costs time.
inline bool Logger::startLine() {
  if (isClosed_) return false;
  if (fileFlag->semid == -1) attachFlag();
  return flagIsForeign_ || fileFlag->startFileOperation();
}

void Logger::attachFlag() {
  const auto now = std::chrono::steady_clock::now();
  if (now < nextAttach_) return;
  nextAttach_ = now + kRetryInterval;
  const bool created = fileFlag->createFlag();
  flagIsForeign_ = !created && errno == EPERM;
  // The set may lack its first value, which the next attempt assigns. A set with too many users (ERANGE) has it.
  if (!created && errno != ERANGE) fileFlag->semid = -1;
}

void Logger::beforeFork() {
  const platform::WaitLimit limit;
  std::unique_lock<std::timed_mutex> turn(forkedLogger->mutex_, std::try_to_lock);
  turnBeforeFork = forkedLogger->waitForThreads(turn);
  turn.release();
}

void Logger::afterForkInParent() {
  if (turnBeforeFork) forkedLogger->mutex_.unlock();
}

// The child is not attached to the flag: the count of its users does not follow a fork.
void Logger::afterForkInChild() {
  forkedLogger->fileFlag->semid = -1;
  forkedLogger->fileFlag->held = false;
  forkedLogger->nextAttach_ = {};
  if (turnBeforeFork) {
    forkedLogger->mutex_.unlock();
  } else {
    new (&forkedLogger->mutex_) std::timed_mutex;  // its holder does not exist here
  }
}

bool Logger::finalize() {
  return true;
}

void Logger::setLogLevel(Log_Level level, const char* component, const char* context) {
  if (level >= Log_Level_Fatal && level <= Log_Level_Trace) {
    target->setLogLevel(static_cast<tarn::Log_Level>(70 - 10 * level));
  }
  enableLevelsFrom(target->getLogLevel());
  setSubDomain(component);
  setSessionId(context);
  if (component != nullptr) logBuildAndLevel(level);
}

void Logger::enableLevelsFrom(tarn::Log_Level lowest) {
  if (lowest <= tarn::TRACE) traceEnabled_ = true;
  if (lowest <= tarn::DEBUG) debugEnabled_ = true;
  if (lowest <= tarn::INFO) infoEnabled_ = true;
  if (lowest <= tarn::WARN) warnEnabled_ = true;
  if (lowest <= tarn::ERROR) errorEnabled_ = true;
  if (lowest <= tarn::FATAL) fatalEnabled_ = true;
}

void Logger::logBuildAndLevel(Log_Level level) {
  char text[kMessageSize];
  std::snprintf(text, sizeof text, "Build Version - %s", kBuildVersion);
  sendText(tarn::INFO, getSubDomain(), text);
  std::snprintf(text, sizeof text, "Logging Level verbosity Set  to %d", static_cast<int>(level));
  sendText(tarn::INFO, getSubDomain(), text);
}

void Logger::logTrace(const char* component, const char* format, ...) {
  if (!traceEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::TRACE, component, format, &arguments);
  va_end(arguments);
}

void Logger::logDebug(const char* component, const char* format, ...) {
  if (!debugEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::DEBUG, component, format, &arguments);
  va_end(arguments);
}

void Logger::logInfo(const char* component, const char* format, ...) {
  if (!infoEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::INFO, component, format, &arguments);
  va_end(arguments);
}

void Logger::logWarn(const char* component, const char* format, ...) {
  if (!warnEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::WARN, component, format, &arguments);
  va_end(arguments);
}

void Logger::logError(const char* component, const char* format, ...) {
  if (!errorEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::ERROR, component, format, &arguments);
  va_end(arguments);
}

void Logger::logFatal(const char* component, const char* format, ...) {
  if (!fatalEnabled_) return;
  va_list arguments;
  va_start(arguments, format);
  formatAndSend(tarn::FATAL, component, format, &arguments);
  va_end(arguments);
}

void Logger::formatAndSend(tarn::Log_Level level, const char* component, const char* format, va_list* arguments) {
  char text[kMessageSize];
  text[0] = '\0';
  getLogMessage(text, sizeof text, format, arguments);
  std::string caller;
  GetNativeStringFromString(component, caller);
  sendText(level, caller, text);
}

void Logger::sendText(tarn::Log_Level level, const std::string& component, const char* text) {
  sendMessageToTARNLogger(level, getSessionId().c_str(), getDomain().c_str(), getSubDomain().c_str(), component.c_str(),
                          "", "", text);
}

void Logger::logSimpleMessage(const char* line) {
  tarn::Log_Level level = tarn::INFO;
  std::string component;
  std::string message;
  parseMessageFromSwf(line, level, component, message);
  sendText(level, component, message.c_str());
}

// A failed search returns npos, and npos plus the separator's size wraps around to 2. The interface requires the
// result.
void Logger::parseMessageFromSwf(const char* line, tarn::Log_Level& level, std::string& component,
                                 std::string& message) {
  const std::string_view text = line;
  const std::size_t first = text.find(kSeparator);
  const std::size_t second = text.find(kSeparator, first + kSeparator.size());
  const std::string_view componentField = text.substr(first + kSeparator.size(), second - first - kSeparator.size());
  const std::string_view messageField = text.substr(second + kSeparator.size());
  level = levelOf(text.substr(0, first));
  component = componentField;
  message = messageField;
}

tarn::Log_Level Logger::getCurrentLogLevel() const {
  return target->getLogLevel();
}

char* Logger::getCurrentTime() {
  const std::time_t now = std::time(nullptr);
  char* text = std::ctime(&now);
  text[std::strcspn(text, "\n")] = '\0';
  return text;
}

bool Logger::GetNativeStringFromString(const std::string& in, std::string& out) {
  out = in;
  return true;
}

int Logger::getLogMessage(char* buffer, std::size_t size, const char* format, va_list* arguments) {
  return tarn::getLogMessage(buffer, size, format, arguments);
}

void Logger::sendMessageToTARNLogger(tarn::Log_Level level, const char* c1, const char* c2, const char* c3,
                                     const char* c4, const char* c5, const char* c6, const char* text) {
  if (isClosed_) return;
  const platform::WaitLimit limit;
  const LineScope scope(*this);
  if (!scope) return target->countMissingLine(level);
  if (!targetIsRegistered_) registerTargetWhenDue();
  tarn::LoggingCore::getInstance()->log(kTargetIdentifier, level, c1, c2, c3, c4, c5, c6, text, 0);
}
