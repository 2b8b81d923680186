#include "platform/FileCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "platform/UniqueFd.h"

namespace platform {
namespace {

// Large enough to make the calls cheap, small enough to stay in the processor's cache between the read and the write.
constexpr std::size_t blockSize = 128 * 1024;

bool writeAll(int fd, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(fd, bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
  return true;
}

bool copyBlocks(int from, int to) {
  std::vector<char> block(blockSize);
  for (;;) {
    const ssize_t got = ::read(from, block.data(), block.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!writeAll(to, block.data(), static_cast<std::size_t>(got))) return false;
  }
}

}  // namespace

bool copyFileContents(const std::string& from, const std::string& to) {
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source) return false;
  const UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666));
  if (!copy) return false;

  // Where files can share their blocks nothing need be copied.
  if (::ioctl(copy.get(), FICLONE, source.get()) == 0) return true;
  if (copyBlocks(source.get(), copy.get())) return true;
  (void)::unlink(to.c_str());  // there is nothing better to do with it
  return false;
}

}  // namespace platform
