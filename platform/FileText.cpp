#include "platform/FileText.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <utility>
#include <vector>

#include "platform/Failure.h"
#include "platform/Text.h"
#include "platform/UniqueFd.h"

namespace platform {
namespace {

FileText failure(int error) {
  return {std::nullopt, errorText(error)};
}

// Returns 0 or the `errno` value.
int readAll(int fd, std::string& bytes) {
  std::vector<char> block(std::size_t{64} << 10);
  for (;;) {
    const ssize_t got = ::read(fd, block.data(), block.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0 ? 0 : errno;
    bytes.append(block.data(), static_cast<std::size_t>(got));
  }
}

}  // namespace

FileText readUtf8File(const std::string& path) {
  const UniqueFd file(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC));
  struct stat item {};
  if (!file || ::fstat(file.get(), &item) != 0) return failure(errno);
  if (S_ISDIR(item.st_mode)) return failure(EISDIR);
  if (!S_ISREG(item.st_mode)) return failure(EINVAL);

  std::string bytes;
  if (item.st_size > 0) bytes.reserve(static_cast<std::size_t>(item.st_size));
  const int error = readAll(file.get(), bytes);
  if (error != 0) return failure(error);
  if (!isUtf8(bytes)) return failure(EILSEQ);
  return {std::move(bytes), ""};
}

}  // namespace platform
