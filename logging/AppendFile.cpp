#include "logging/AppendFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>
#include <string_view>
#include <utility>

#include "platform/FileKind.h"
#include "platform/FileSizeSignal.h"

namespace tarn {

namespace {

platform::UniqueFd openForAppending(int folder, const std::string& name, int flags) {
  flags |= O_APPEND | O_NONBLOCK | O_CLOEXEC;
  platform::UniqueFd file(::openat(folder, name.c_str(), O_RDWR | flags, 0666));
  if (!file) file.reset(::openat(folder, name.c_str(), O_WRONLY | flags, 0666));
  return file;
}

bool isLogFile(int file, const platform::OwnersFolder& folder) {
  struct stat object {};
  if (::fstat(file, &object) != 0) return false;
  if (!folder.isForeign()) return !S_ISFIFO(object.st_mode);
  return S_ISREG(object.st_mode) && object.st_nlink == 1 && folder.mayOwn(object.st_uid);
}

}  // namespace

platform::UniqueFd openLog(const platform::OwnersFolder& folder) {
  if (!folder) return {};
  platform::UniqueFd file = openForAppending(folder.get(), folder.name(), O_CREAT | folder.openFlags());
  if (file && !isLogFile(file.get(), folder)) file.reset();
  return file;
}

bool AppendFile::open(const std::string& path) {
  return use(openForAppending(AT_FDCWD, path, 0));
}

bool AppendFile::use(platform::UniqueFd file) {
  file_ = std::move(file);
  lineEnd_ = kUnknown;
  return isOpen();
}

bool AppendFile::isAt(const platform::OwnersFolder& folder) const {
  struct stat own {};
  struct stat other {};
  return ::fstat(file_.get(), &own) == 0 &&
         ::fstatat(folder.get(), folder.name().c_str(), &other, folder.statFlags()) == 0 &&
         platform::isSame(own, other);
}

void AppendFile::close() {
  file_.reset();
}

bool AppendFile::isInsideLine() {
  const off_t end = ::lseek(file_.get(), 0, SEEK_END);
  const bool changed = end != lineEnd_;
  lineEnd_ = end;
  if (!changed || end <= 0) return false;

  char last = '\n';
  return ::pread(file_.get(), &last, 1, end - 1) == 1 && last != '\n';
}

bool AppendFile::append(std::string_view text) {
  const platform::FileSizeSignalScope scope;
  const bool complete = ::write(file_.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  lineEnd_ = complete ? lineEnd_ + static_cast<off_t>(text.size()) : kUnknown;
  return complete;
}

}  // namespace tarn
