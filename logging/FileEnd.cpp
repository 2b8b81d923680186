#include "logging/FileEnd.h"

#include <fcntl.h>
#include <unistd.h>

namespace tarn {

void FileEnd::open(const std::string& path) {
  file_.reset(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  forget();
}

bool FileEnd::isInsideLine() {
  const off_t end = ::lseek(file_.get(), 0, SEEK_END);
  const bool moved = end != endOfLine_;
  endOfLine_ = end;
  if (!moved || end <= 0) return false;

  char last = '\n';
  return ::pread(file_.get(), &last, 1, end - 1) == 1 && last != '\n';
}

}  // namespace tarn
