#include "logging/LogTargetDefault.h"

#include <sys/stat.h>
#include <sys/time.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <initializer_list>
#include <string_view>

#include "logging/Helpers.h"
#include "platform/Machine.h"
#include "platform/PathLock.h"

namespace tarn {
namespace {

constexpr int lockProject = 11;
constexpr std::int64_t secondsBetweenSizeChecks = 3600;
constexpr std::size_t messageSize = 4096;
constexpr std::size_t timeSize = 256;
constexpr std::size_t keptLineSize = 64 * 1024;

bool linesCarryThreadId() {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
  return !utilGetCurrentOSVersion(major, minor, bugFix) || numbersThreads(major, minor);
}

bool mayHoldToken(const char* message) {
  const char* first = std::strstr(message, "eyJ");
  return first != nullptr && std::strstr(first, ".eyJ") != nullptr;
}

bool isPipe(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 && S_ISFIFO(item.st_mode);
}

const char* orEmpty(const char* text) {
  return text == nullptr ? "" : text;
}

// A level as a line shows it.
std::string_view bracketed(Log_Level level) {
  switch (level) {
    case TRACE:
      return "[TRACE]";
    case DEBUG:
      return "[DEBUG]";
    case INFO:
      return "[INFO]";
    case WARN:
      return "[WARN]";
    case ERROR:
      return "[ERROR]";
    case FATAL:
      return "[FATAL]";
    case NONE:
      return "[NONE]";
    default:
      return "[ALL]";
  }
}

// Makes room once for the whole line, whose fields are many and small.
void appendJoined(std::initializer_list<std::string_view> fields, std::string_view separator, std::string& out) {
  std::size_t size = separator.size() * (fields.size() - 1);
  for (const std::string_view field : fields)
    size += field.size();

  std::size_t place = out.size();
  out.resize(place + size);
  for (const std::string_view& field : fields) {
    if (&field != fields.begin()) place += separator.copy(&out[place], separator.size());
    place += field.copy(&out[place], field.size());
  }
}

class Holding {
 public:
  explicit Holding(BinaryLock& lock) : lock_(lock), held_(lock.wait()) {}
  Holding(const Holding&) = delete;
  Holding& operator=(const Holding&) = delete;
  ~Holding() {
    if (held_) lock_.release();
  }
  explicit operator bool() const { return held_; }

 private:
  BinaryLock& lock_;
  const bool held_;
};

}  // namespace

LogTargetDefault::LogTargetDefault(const char* identifier)
    : LogTargetBase(identifier), threadIdEnabled(linesCarryThreadId()) {}

LogTargetDefault::~LogTargetDefault() {
  dropLock();
}

bool LogTargetDefault::SetStreamHandle(std::fstream& handle) {
  struct stat item {};
  const bool existed = ::lstat(filePath.c_str(), &item) == 0;
  const bool isOurs = &handle == &stream;
  if (handle.is_open()) handle.close();
  if (isOurs) fileEnd.close();
  if (isPipe(filePath)) return false;

  handle.clear();
  handle.open(filePath, std::ios::out | std::ios::app);
  if (!handle.is_open()) return false;

  if (!existed && ::chmod(filePath.c_str(), 0666) != 0) {
    std::fprintf(stderr, "\n Error Set File permissions. errno = %s", std::strerror(errno));
  }
  if (!isOurs || fileEnd.open(filePath)) return true;
  handle.close();
  return false;
}

bool LogTargetDefault::SetStreamPath(const char* name) {
  std::string path;
  if (name == nullptr || !getTempPath(path) || !appendPath(path, name)) return false;
  filePath = path;
  return true;
}

void LogTargetDefault::WriteStream(const char* text) {
  beginLine();
  line += orEmpty(text);
  endLine();
}

void LogTargetDefault::beginLine() {
  line.assign(fileEnd.isInsideLine() ? "\n" : "");
}

void LogTargetDefault::endLine() {
  line += '\n';
  // Not through the stream: it hands over every line in two pieces, or keeps what a full disk refused.
  if (stream.is_open()) (void)fileEnd.append(line);  // a line for which there is no room is dropped
  if (line.capacity() > keptLineSize) line = {};
}

bool LogTargetDefault::onRegisterTarget() {
  if (!fileUsable) return false;
  if (filePath.empty() && !SetStreamPath(fileName.c_str())) return false;
  if (!SetStreamHandle(stream)) return false;

  if (!lock) {
    lock = std::make_unique<BinaryLock>();
    lockPath = filePath;
    (void)lock->create(lockPath, lockProject);  // unlocked writing would be worse than none
  }
  segmentCheckTime = lastLineTime = std::time(nullptr);
  if (const Holding held(*lock); held) SegmentLogFile(true);
  registered = true;
  return true;
}

bool LogTargetDefault::onUnregisterTarget() {
  stream.close();
  fileEnd.close();
  dropLock();
  registered = false;
  return true;
}

void LogTargetDefault::dropLock() {
  if (!lock) return;
  const platform::PathLock oneAtATime(lockPath);
  lock->finalize();
  lock.reset();
}

bool LogTargetDefault::writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                                const char* component, const char* extra1, const char* extra2, const char* format,
                                va_list* arguments, unsigned long long timeMs) {
  if (logLevel > level || !lock) return true;
  const Holding held(*lock);
  if (!held) return true;
  checkSizeWhenDue();

  char formatted[messageSize];
  formatted[0] = '\0';
  if (format != nullptr) getLogMessage(formatted, sizeof formatted, format, arguments);
  const char* message = arguments == nullptr ? format : formatted;
  beginLine();
  formatLog(timeMs, level, sessionId, domain, subDomain, component, extra1, extra2, message, line);
  endLine();
  return true;
}

void LogTargetDefault::checkSizeWhenDue() {
  if (lastLineTime - segmentCheckTime < secondsBetweenSizeChecks) return;
  if (SegmentLogFile(true)) segmentCheckTime = lastLineTime;
}

void LogTargetDefault::formatLog(unsigned long long timeMs, Log_Level level, const char* sessionId, const char* domain,
                                 const char* subDomain, const char* component, const char* extra1, const char* extra2,
                                 const char* message, std::string& out) {
  char time[timeSize];
  getTimeStr(timeMs, time);
  message = orEmpty(message);
  if (mayHoldToken(message)) {
    message = "Found access/device token. Log skipped.";
    level = WARN;
  }

  const std::string threadId = getCurrentThreadID();
  appendJoined({time, bracketed(level), orEmpty(sessionId), orEmpty(domain), orEmpty(subDomain), orEmpty(component),
                orEmpty(extra1), orEmpty(extra2), threadId, message},
               separator, out);
}

void LogTargetDefault::getTimeStr(unsigned long long timeMs, char* buffer) {
  timeval time{};
  if (timeMs != 0) {
    time.tv_sec = static_cast<time_t>(timeMs / 1000);
    time.tv_usec = static_cast<suseconds_t>(timeMs % 1000 * 1000);
  } else {
    getCurrentTime(time);
  }
  lastLineTime = time.tv_sec;

  const std::string& text = secondText.at(time.tv_sec);
  const auto milliseconds = static_cast<unsigned>(time.tv_usec / 1000);
  buffer += text.copy(buffer, timeSize - sizeof ":000");
  *buffer++ = ':';
  for (const unsigned place : {100u, 10u, 1u})
    *buffer++ = static_cast<char>('0' + milliseconds / place % 10);
  *buffer = '\0';
}

std::string LogTargetDefault::getCurrentThreadID() const {
  return threadIdEnabled ? std::to_string(platform::currentThreadId()) : std::string();
}

std::string LogTargetDefault::getLogLevelString(Log_Level level) const {
  const std::string_view text = bracketed(level);
  return std::string(text.substr(1, text.size() - 2));
}

}  // namespace tarn
