#include "platform/FileStream.h"

#include <fcntl.h>
#include <unistd.h>
#include <ext/stdio_filebuf.h>

#include <fstream>
#include <ios>
#include <string>
#include <utility>

namespace platform {
namespace {

// With a position of its own, if /proc is there: the kernel locks a position that two descriptors share, at every write
// through either.
int reopen(int file) {
  const std::string path = "/proc/self/fd/" + std::to_string(file);
  const int reopened = ::open(path.c_str(), O_WRONLY | O_APPEND | O_NONBLOCK | O_CLOEXEC);
  return reopened != -1 ? reopened : ::fcntl(file, F_DUPFD_CLOEXEC, 0);
}

}  // namespace

bool openForAppending(std::fstream& stream, int file) {
  const int duplicate = reopen(file);
  if (duplicate == -1) return false;
  __gnu_cxx::stdio_filebuf<char> buffer(duplicate, std::ios::out | std::ios::app);  // also closes it if it throws
  if (!buffer.is_open()) {
    (void)::close(duplicate);
    return false;
  }
  *stream.rdbuf() = std::move(buffer);
  return true;
}

}  // namespace platform
