#include "logging/FileEnd.h"

#include <fcntl.h>
#include <unistd.h>

namespace tarn {

bool FileEnd::open(const std::string& path) {
  constexpr int flags = O_APPEND | O_NONBLOCK | O_CLOEXEC;
  file_.reset(::open(path.c_str(), O_RDWR | flags));
  if (!file_) file_.reset(::open(path.c_str(), O_WRONLY | flags));
  endOfLine_ = unknown;
  return static_cast<bool>(file_);
}

void FileEnd::close() {
  file_.reset();
}

bool FileEnd::isInsideLine() {
  const off_t end = ::lseek(file_.get(), 0, SEEK_END);
  const bool moved = end != endOfLine_;
  endOfLine_ = end;
  if (!moved || end <= 0) return false;

  char last = '\n';
  return ::pread(file_.get(), &last, 1, end - 1) == 1 && last != '\n';
}

bool FileEnd::append(std::string_view text) {
  const bool whole = ::write(file_.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  endOfLine_ = whole ? endOfLine_ + static_cast<off_t>(text.size()) : unknown;
  return whole;
}

}  // namespace tarn
