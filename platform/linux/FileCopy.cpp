#include "platform/FileCopy.h"

#include <linux/fs.h>
#include <linux/limits.h>
#include <sys/ioctl.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <vector>

namespace platform {
namespace {

// Copies the bytes from `at` to `end`. Returns the offset up to which they are copied.
off_t copyPart(int from, int to, off_t at, off_t end) {
  constexpr off_t kMaxSize = 1 << 30;  // a call does not copy more than 2 GiB
  off_t read = at;
  off_t written = at;
  while (read < end) {
    const auto size = static_cast<std::size_t>(std::min(end - read, kMaxSize));
    const ssize_t copied = ::copy_file_range(from, &read, to, &written, size, 0);
    if (copied < 0 && errno == EINTR) continue;
    if (copied <= 0) break;
  }
  return read;
}

std::vector<char> attributeNames(int fd) {
  for (int tries = 0; tries < 10; ++tries) {
    const ssize_t size = ::flistxattr(fd, nullptr, 0);
    if (size <= 0) return {};
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t got = ::flistxattr(fd, names.data(), names.size());
    if (got < 0 && errno == ERANGE) continue;  // an attribute was added
    names.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return names;
  }
  return {};
}

}  // namespace

off_t copyData(int from, int to, off_t size) {
  // Shares the blocks. The file may have shrunk or grown since its size was read.
  if (::ioctl(to, FICLONE, from) == 0) return std::min(::lseek(to, 0, SEEK_END), size);

  off_t at = 0;
  while (at < size) {
    const off_t data = ::lseek(from, at, SEEK_DATA);
    if (data < 0) return errno == ENXIO ? size : at;  // a hole up to the end
    const off_t hole = std::min(::lseek(from, data, SEEK_HOLE), size);
    if (hole <= data) return at;
    at = copyPart(from, to, data, hole);
    if (at < hole) return at;
  }
  return at;
}

void copyExtendedAttributes(int from, int to) {
  const std::vector<char> names = attributeNames(from);
  if (names.empty()) return;
  std::vector<char> value(XATTR_SIZE_MAX);
  for (auto name = names.begin(); name != names.end();) {
    const char* const attribute = &*name;
    const ssize_t size = ::fgetxattr(from, attribute, value.data(), value.size());
    if (size >= 0) (void)::fsetxattr(to, attribute, value.data(), static_cast<std::size_t>(size), 0);
    while (*name++ != '\0') {
    }
  }
}

void copyAccessList(int /*from*/, int /*to*/) {}

std::array<timespec, 2> timesOf(const struct stat& object) {
  return {object.st_atim, object.st_mtim};
}

}  // namespace platform
