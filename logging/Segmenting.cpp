#include "logging/Segmenting.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <ctime>
#include <string>
#include <thread>
#include <utility>

#include "logging/AppendFile.h"
#include "logging/Helpers.h"
#include "logging/LogTargetDefault.h"
#include "platform/CancellationScope.h"
#include "platform/FileCopy.h"
#include "platform/FileSizeSignal.h"
#include "platform/OwnersFolder.h"
#include "platform/Path.h"
#include "platform/UniqueFd.h"

namespace tarn {
namespace {

constexpr long long kMaxLogSize = 10 * 1024 * 1024;
constexpr std::chrono::milliseconds kTimeout{1500};
constexpr std::chrono::milliseconds kRetryInterval{10};

// Returns the name of an archive in the folder of the log. Returns "" if the extension, which follows the last "." of
// the whole path, begins in a folder's name.
std::string archiveNameOf(const std::string& log) {
  std::string archive = log;
  appendTimeStampToFile(archive);
  const bool isSameFolder = platform::parentFolder(archive) == platform::parentFolder(log);
  return isSameFolder ? platform::lastPathComponent(archive) : "";
}

std::time_t currentSecond() {
  timeval now{};
  (void)getCurrentTime(now);
  return now.tv_sec;
}

bool exists(const std::string& name, const platform::OwnersFolder& folder) {
  struct stat object {};
  return ::fstatat(folder.get(), name.c_str(), &object, AT_SYMLINK_NOFOLLOW) == 0 || errno != ENOENT;
}

bool closeCopy(platform::UniqueFd file) {
  return ::close(file.release()) == 0 || errno == EINTR;  // network file systems report a full disk here
}

// Copies the log under a temporary name, so that a killed process leaves no part of an archive. The name is always the
// same: the next rotation removes what was left.
bool createArchive(int log, const platform::OwnersFolder& folder, const std::string& archive) {
  const std::string temporary = folder.sibling("." + folder.fileName() + ".part");
  (void)::unlinkat(folder.get(), temporary.c_str(), 0);
  constexpr int kNewFile = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  platform::UniqueFd copy(::openat(folder.get(), temporary.c_str(), kNewFile, 0666));
  if (!copy) return false;
  const platform::FileSizeSignalScope scope;
  if (platform::copyFileContents(log, copy.get()) && closeCopy(std::move(copy)) &&
      ::renameat(folder.get(), temporary.c_str(), folder.get(), archive.c_str()) == 0)
    return true;
  (void)::unlinkat(folder.get(), temporary.c_str(), 0);
  return false;
}

// Empties the log. Returns false only if it certainly keeps its contents.
bool makeEmpty(int log) {
  while (::ftruncate(log, 0) != 0) {
    if (errno == EINTR) continue;
    struct stat object {};
    return ::fstat(log, &object) != 0 || object.st_size == 0;
  }
  return true;
}

}  // namespace

bool copyContentOfFileToFile(const std::string& from, const std::string& to) {
  return platform::copyFileContents(from, to);
}

bool appendTimeStampToFile(std::string& path) {
  std::string extension;
  std::string stamp;
  getFileExtension(path, extension);
  getDatetime(stamp);
  removeFileExtension(path);
  path += " " + stamp + "." + extension;
  return true;
}

std::string ArchiveNames::next(const std::string& log, const platform::OwnersFolder& folder) {
  const auto deadline = Clock::now() + kTimeout;
  do {
    const std::string name = archiveNameOf(log);
    if (name.empty()) return "";
    std::string archive = folder.sibling(name);
    if (isLast(archive) || !exists(archive, folder)) {
      last_ = archive;
      lastSecond_ = currentSecond();
      lastTime_ = Clock::now();
      return archive;
    }
    std::this_thread::sleep_for(kRetryInterval);
  } while (Clock::now() < deadline);
  return "";
}

// The second alone is not enough: a clock that was set back repeats it.
bool ArchiveNames::isLast(const std::string& archive) const {
  return archive == last_ && currentSecond() == lastSecond_ && Clock::now() - lastTime_ < std::chrono::minutes(1);
}

bool LogTargetDefault::SegmentLogFile(bool) {
  long long size = 0;
  if (!getFileSize(filePath, size)) return false;
  if (size < kMaxLogSize) return true;

  const platform::CancellationScope whole;
  if (stream.is_open()) stream.close();
  rotate();
  return SetStreamHandle(stream);
}

// Copies and empties one open file: the path may lead to another file meanwhile.
void LogTargetDefault::rotate() {
  const platform::OwnersFolder folder(filePath);
  const platform::UniqueFd log = openLog(folder);
  if (!log) return;
  const std::string archive = archiveNames_.next(filePath, folder);
  if (archive.empty() || !createArchive(log.get(), folder, archive)) return;
  // Without this, every check of a file that cannot be emptied would add an archive.
  if (!makeEmpty(log.get())) (void)::unlinkat(folder.get(), archive.c_str(), 0);
}

bool LogTargetDefault::cleanFile() {
  if (stream.is_open()) stream.close();
  const platform::UniqueFd log = openLog(platform::OwnersFolder(filePath));
  return log && ::ftruncate(log.get(), 0) == 0;
}

bool LogTargetDefault::renameLogFile() {
  std::string extension;
  std::string stamp;
  std::string renamed = filePath;
  getFileExtension(filePath, extension);
  getDatetime(stamp);
  removeFileExtension(renamed);
  renamed += " " + stamp;
  if (!addFileExtension(renamed, extension)) return false;

  const platform::OwnersFolder asOwner(filePath);
  if (!asOwner || fileExistsAtPath(renamed) || !renamePathToPath(filePath, renamed)) return false;
  renamedFilePath = renamed;
  return true;
}

}  // namespace tarn
