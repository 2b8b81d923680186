#include "logging/LogTargetDefault.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>

#include "logging/Helpers.h"
#include "platform/CancellationScope.h"
#include "platform/Failure.h"
#include "platform/FileSizeSignal.h"
#include "platform/FileStream.h"
#include "platform/OwnersFolder.h"
#include "platform/Path.h"
#include "platform/PathLock.h"
#include "platform/SemaphoreSet.h"
#include "platform/Users.h"

namespace tarn {
namespace {

constexpr int kLockProject = 11;
constexpr std::int64_t kSizeCheckInterval = 3600;  // seconds
constexpr std::int64_t kRepairInterval = 60;       // seconds
constexpr std::size_t kMessageSize = 4096;
constexpr std::size_t kMaxKeptCapacity = 64 * 1024;

bool systemHasThreadIds() {
  int major = 0;
  int minor = 0;
  int bugFix = 0;
  return !utilGetCurrentOSVersion(major, minor, bugFix) || hasThreadIds(major, minor);
}

// Creates the user's log folder again if it was removed. Other folders are the caller's.
void restoreLogsFolder(const std::string& file) {
  constexpr std::string_view kLogsFolder = "/Library/Logs";
  const std::string folder = platform::deletingLastPathComponent(file);
  if (folder.size() <= kLogsFolder.size()) return;
  const std::size_t home = folder.size() - kLogsFolder.size();
  if (folder.substr(home) == kLogsFolder) (void)platform::makeLogsFolder(folder.substr(0, home));
}

int makeWritable(const std::string& path, int file, bool isForeign) {
  constexpr mode_t kMode = 0666;
  return isForeign ? ::fchmod(file, kMode) : ::chmod(path.c_str(), kMode);
}

}  // namespace

// Holds the target's lock for a scope. The lock may be replaced during the wait.
class LogTargetDefault::LockGuard {
 public:
  explicit LockGuard(const LogTargetDefault& target) : current_(target.currentLock_) { take(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;
  ~LockGuard() { release(); }
  explicit operator bool() const { return lock_ != nullptr; }

  void takeAgain() {
    release();
    take();
  }

 private:
  void take() {
    for (BinaryLock* lock = current_; lock != nullptr && lock->wait(); lock = current_) {
      lock_ = lock;
      if (lock == current_) return;
      release();
    }
  }

  void release() {
    if (lock_ != nullptr) std::exchange(lock_, nullptr)->release();
  }

  const std::atomic<BinaryLock*>& current_;
  BinaryLock* lock_ = nullptr;
};

LogTargetDefault::LogTargetDefault(const char* identifier)
    : LogTargetBase(identifier), threadIdEnabled(systemHasThreadIds()) {}

LogTargetDefault::~LogTargetDefault() {
  closeLock();
}

bool LogTargetDefault::SetStreamHandle(std::fstream& handle) {
  AppendFile scratch;
  AppendFile& file = &handle == &stream ? appendFile_ : scratch;
  if (handle.is_open()) handle.close();
  handle.clear();

  const platform::OwnersFolder folder(filePath);
  struct stat item {};
  const bool existed = ::fstatat(folder.get(), folder.name().c_str(), &item, AT_SYMLINK_NOFOLLOW) == 0;
  // A file that is still in place stays open: it might not be possible to open it again.
  if (folder && !file.isAt(folder)) file.close();
  if (!file.isOpen() && !file.use(openLog(folder))) return false;
  if (!existed && makeWritable(filePath, file.get(), folder.isForeign()) != 0) {
    std::fprintf(stderr, "\n Error Set File permissions. errno = %s", platform::errorText(errno).c_str());
  }
  return platform::openForAppending(handle, file.get());
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

// Inline, as `endLine`: after a system call every return costs time.
inline void LogTargetDefault::beginLine() {
  line_.clear();
  if (appendFile_.isInsideLine()) line_ += '\n';
}

inline void LogTargetDefault::endLine() {
  line_ += '\n';
  // Not through `stream`: it writes a line in two pieces, or keeps a line that a full disk rejected.
  if (appendFile_.isOpen()) (void)appendFile_.append(line_);  // a line that does not fit on the disk is lost
  if (line_.capacity() > kMaxKeptCapacity) line_ = {};
}

bool LogTargetDefault::onRegisterTarget() {
  platform::handleFileSizeSignal();
  if (!fileUsable) return false;
  if (filePath.empty() && !SetStreamPath(fileName.c_str())) return false;
  if (!SetStreamHandle(stream)) return false;

  if (!lock) {
    lock = std::make_unique<BinaryLock>();
    lockPath_ = filePath;
    lockKey_ = platform::SemaphoreSet::keyFor(lockPath_, kLockProject);
    // On failure the target writes nothing, because unlocked writes could mix lines.
    (void)lock->create(lockPath_, kLockProject);
    currentLock_ = lock.get();
  }
  segmentCheckTime = lastLineTime = repairTime_ = std::time(nullptr);
  if (const LockGuard guard(*this); guard) SegmentLogFile(true);
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
  const std::lock_guard<std::mutex> turn(mutex);  // a line may be replacing the lock
  const platform::PathLock pathLock(lockPath_);
  finalizeLocks();
}

void LogTargetDefault::closeLock() {
  if (!lock) return;
  const platform::PathLock pathLock(lockPath_);
  currentLock_ = nullptr;
  finalizeLocks();
  formerLocks_.clear();
  lock.reset();
}

// Not left to the destructors, which keep a set whose identifier is 0.
void LogTargetDefault::finalizeLocks() {
  for (const std::unique_ptr<BinaryLock>& each : formerLocks_)
    each->finalize();
  lock->finalize();
}

bool LogTargetDefault::writeLog(Log_Level level, const char* sessionId, const char* domain, const char* subDomain,
                                const char* component, const char* extra1, const char* extra2, const char* format,
                                va_list* arguments, unsigned long long timeMs) {
  if (logLevel > level || currentLock_ == nullptr) return true;
  LockGuard guard(*this);
  if (guard) checkSizeWhenDue();
  if (isRepairDue(timeMs) && repair(static_cast<bool>(guard))) guard.takeAgain();
  if (!guard) {
    countMissingLine(level);
    return true;
  }

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

bool LogTargetDefault::isRepairDue(unsigned long long timeMs) {
  const std::int64_t now = timeMs != 0 ? static_cast<std::int64_t>(timeMs / 1000) : std::time(nullptr);
  std::int64_t last = repairTime_;
  const bool isDue = now < last || now - last >= kRepairInterval;
  return isDue && repairTime_.compare_exchange_strong(last, now);
}

bool LogTargetDefault::repair(bool held) {
  const platform::CancellationScope uncancelled;
  const std::unique_lock<std::mutex> turn(mutex, std::try_to_lock);
  if (!turn) return false;
  if (!held) return lock->getReferenceCount() == -1 && replaceLock();

  if (!appendFile_.isOpen() || !stream.is_open() || !appendFile_.isAt(platform::OwnersFolder(filePath))) {
    restoreLogsFolder(filePath);
    (void)SetStreamHandle(stream);
  }
  const key_t key = platform::SemaphoreSet::keyFor(lockPath_, kLockProject);
  return key != -1 && key != lockKey_ && replaceLock();
}

bool LogTargetDefault::replaceLock() {
  auto replacement = std::make_unique<BinaryLock>();
  if (!replacement->create(lockPath_, kLockProject)) return false;
  lockKey_ = platform::SemaphoreSet::keyFor(lockPath_, kLockProject);
  formerLocks_.push_back(std::exchange(lock, std::move(replacement)));
  currentLock_ = lock.get();
  return true;
}

void LogTargetDefault::checkSizeWhenDue() {
  if (lastLineTime - segmentCheckTime < kSizeCheckInterval) return;
  if (SegmentLogFile(true)) segmentCheckTime = lastLineTime;
}

}  // namespace tarn
