#include "logging/LogTargetDefault.h"

#include <fcntl.h>
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
#include "platform/OwnersFolder.h"
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

// The path of an open descriptor leads to the file that was checked. A system may lack /dev/fd, for example in a folder
// that became the root folder.
bool openStream(std::fstream& handle, int file, const std::string& path, bool isForeign) {
  constexpr std::ios::openmode kAppend = std::ios::out | std::ios::app;
  const std::string descriptor = "/dev/fd/" + std::to_string(file);
  handle.open(descriptor, kAppend);
  if (!handle.is_open() && !isForeign) handle.open(path, kAppend);
  platform::closeFileOnExec(descriptor);
  return handle.is_open();
}

int makeWritable(const std::string& path, int file, bool isForeign) {
  constexpr mode_t kMode = 0666;
  return isForeign ? ::fchmod(file, kMode) : ::chmod(path.c_str(), kMode);
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
    std::fprintf(stderr, "\n Error Set File permissions. errno = %s", std::strerror(errno));
  }
  return openStream(handle, file.get(), filePath, folder.isForeign());
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
  if (appendFile_.isOpen()) (void)appendFile_.append(line_);  // a line that does not fit on the disk is lost
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
  if (!guard) return true;
  checkSizeWhenDue();

  char formatted[kMessageSize];
  formatted[0] = '\0';
  if (format != nullptr) getLogMessage(formatted, sizeof formatted, format, arguments);
  const char* message = arguments == nullptr ? format : formatted;
  beginLine();
  formatLog(timeMs, level, sessionId, domain, subDomain, component, extra1, extra2, message, line_);
  endLine();
  return true;
}

void LogTargetDefault::checkSizeWhenDue() {
  if (lastLineTime - segmentCheckTime < kSizeCheckInterval) return;
  if (SegmentLogFile(true)) segmentCheckTime = lastLineTime;
}

}  // namespace tarn
