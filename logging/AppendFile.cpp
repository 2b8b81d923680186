#include "logging/AppendFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <string>
#include <string_view>

namespace tarn {

bool AppendFile::open(const std::string& path) {
  constexpr int kFlags = O_APPEND | O_NONBLOCK | O_CLOEXEC;
  file_.reset(::open(path.c_str(), O_RDWR | kFlags));
  if (!file_) file_.reset(::open(path.c_str(), O_WRONLY | kFlags));
  lineEnd_ = kUnknown;
  return static_cast<bool>(file_);
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
  const bool complete = ::write(file_.get(), text.data(), text.size()) == static_cast<ssize_t>(text.size());
  lineEnd_ = complete ? lineEnd_ + static_cast<off_t>(text.size()) : kUnknown;
  return complete;
}

}  // namespace tarn
