#include "logging/LogTargetDefault.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <fstream>
#include <memory>
#include <string>

#include "logging/Helpers.h"
#include "platform/CloseOnExec.h"
#include "platform/PathLock.h"

namespace tarn {
namespace {

constexpr int kLockProject = 11;
constexpr std::int64_t kSizeCheckInterval = 3600;  // seconds
constexpr std::size_t kMessageSize = 4096;
constexpr std::size_t kMaxKeptCapacity = 64 * 1024;

bool systemHasThreadIds() {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
  return !utilGetCurrentOSVersion(major, minor, bugFix) || hasThreadIds(major, minor);
}

bool isPipe(const std::string& path) {
  struct stat item {};
  return ::stat(path.c_str(), &item) == 0 && S_ISFIFO(item.st_mode);
}

class LockGuard {
 public:
  explicit LockGuard(BinaryLock& lock) : lock_(lock), held_(lock.wait()) {}
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;
  ~LockGuard() {
    if (held_) lock_.release();
  }
  explicit operator bool() const { return held_; }

 private:
  BinaryLock& lock_;
  const bool held_;
};

}  // namespace

LogTargetDefault::LogTargetDefault(const char* identifier)
    : LogTargetBase(identifier), threadIdEnabled(systemHasThreadIds()) {}

LogTargetDefault::~LogTargetDefault() {
  closeLock();
}

bool LogTargetDefault::SetStreamHandle(std::fstream& handle) {
  struct stat item {};
  const bool existed = ::lstat(filePath.c_str(), &item) == 0;
  const bool isOwnStream = &handle == &stream;
  if (handle.is_open()) handle.close();
  if (isOwnStream) appendFile_.close();
  if (isPipe(filePath)) return false;

  handle.clear();
  handle.open(filePath, std::ios::out | std::ios::app);
  if (!handle.is_open()) return false;
  platform::closeFileOnExec(filePath);

  if (!existed && ::chmod(filePath.c_str(), 0666) != 0) {
    std::fprintf(stderr, "\n Error Set File permissions. errno = %s", std::strerror(errno));
  }
  if (!isOwnStream || appendFile_.open(filePath)) return true;
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
  line_ += orEmpty(text);
  endLine();
}

void LogTargetDefault::beginLine() {
  line_.assign(appendFile_.isInsideLine() ? "\n" : "");
}

void LogTargetDefault::endLine() {
  line_ += '\n';
  // Not through `stream`: it writes a line in two pieces, or keeps a line that a full disk rejected.
  if (stream.is_open()) (void)appendFile_.append(line_);  // a line that does not fit on the disk is lost
  if (line_.capacity() > kMaxKeptCapacity) line_ = {};
}

bool LogTargetDefault::onRegisterTarget() {
  if (!fileUsable) return false;
  if (filePath.empty() && !SetStreamPath(fileName.c_str())) return false;
  if (!SetStreamHandle(stream)) return false;

  if (!lock) {
    lock = std::make_unique<BinaryLock>();
    lockPath_ = filePath;
    // On failure the target writes nothing, because unlocked writes could mix lines.
    (void)lock->create(lockPath_, kLockProject);
  }
  segmentCheckTime = lastLineTime = std::time(nullptr);
  if (const LockGuard guard(*lock); guard) SegmentLogFile(true);
  registered = true;
  return true;
}

bool LogTargetDefault::onUnregisterTarget() {
  stream.close();
  appendFile_.close();
  closeLock();
  registered = false;
  return true;
}

void LogTargetDefault::closeForExit() {
  if (!lock) return;
  const platform::PathLock pathLock(lockPath_);
  lock->finalize();
}

void LogTargetDefault::closeLock() {
  if (!lock) return;
  const platform::PathLock pathLock(lockPath_);
  lock->finalize();
  lock.reset();
}

bool LogTargetDefault::writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                                const char* component, const char* extra1, const char* extra2, const char* format,
                                va_list* arguments, unsigned long long timeMs) {
  if (logLevel > level || !lock) return true;
  const LockGuard guard(*lock);
  if (!guard) {
    countMissingLine(level);
    return true;
  }
  checkSizeWhenDue();

  char formatted[kMessageSize];
  formatted[0] = '\0';
  if (format != nullptr) getLogMessage(formatted, sizeof formatted, format, arguments);
  const char* message = arguments == nullptr ? format : formatted;
  beginLine();
  if (const unsigned missing = missingLines_.load(std::memory_order_relaxed); missing != 0) {
    missingLines_ -= missing;
    const std::string note = "Missing log lines: " + std::to_string(missing) + " (the log could not be locked)";
    formatLog(timeMs, WARN, sessionId, domain, subDomain, component, "", "", note.c_str(), line_);
    line_ += '\n';
  }
  formatLog(timeMs, level, sessionId, domain, subDomain, component, extra1, extra2, message, line_);
  endLine();
  return true;
}

void LogTargetDefault::countMissingLine(Log_Level level) {
  if (logLevel <= level) ++missingLines_;
}

void LogTargetDefault::checkSizeWhenDue() {
  if (lastLineTime - segmentCheckTime < kSizeCheckInterval) return;
  if (SegmentLogFile(true)) segmentCheckTime = lastLineTime;
}

}  // namespace tarn
