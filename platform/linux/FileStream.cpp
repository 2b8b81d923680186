#include "platform/FileStream.h"

#include <fcntl.h>
#include <unistd.h>
#include <ext/stdio_filebuf.h>

#include <fstream>
#include <ios>
#include <utility>

namespace platform {

bool openForAppending(std::fstream& stream, int file) {
  const int duplicate = ::fcntl(file, F_DUPFD_CLOEXEC, 0);
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
