#include "platform/FileContents.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <vector>

#include "platform/WriteAll.h"

namespace platform {
namespace {

// Large enough to make the calls cheap, small enough to stay in the processor's cache between the read and the write.
constexpr std::size_t blockSize = 128 * 1024;

// Copies from where both files stand, at most so many bytes. False, with `errno`, when it stopped at an error.
bool copyBlocks(int from, int to, off_t most) {
  std::vector<char> block(blockSize);
  while (most > 0) {
    const auto size = static_cast<std::size_t>(std::min<off_t>(most, blockSize));
    const ssize_t got = ::read(from, block.data(), size);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!writeAll(to, {block.data(), static_cast<std::size_t>(got)})) return false;
    most -= got;
  }
  return true;
}

}  // namespace

bool copyContents(int from, int to, off_t size) {
  const off_t done = copyData(from, to, size);
  if (done > 0 && (::ftruncate(to, done) != 0 || ::lseek(to, done, SEEK_SET) < 0)) return false;
  (void)::lseek(from, done, SEEK_SET);  // a pipe has no places

  // What the system has not copied by itself goes block by block.
  // Some files, those of /proc, hold more than the nothing that they tell. A file that grows is not run after.
  return copyBlocks(from, to, size > 0 ? size - done : std::numeric_limits<off_t>::max());
}

}  // namespace platform
