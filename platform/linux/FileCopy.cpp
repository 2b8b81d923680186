#include "platform/FileCopy.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "platform/FileKind.h"
#include "platform/UniqueFd.h"
#include "platform/WriteAll.h"
#include "platform/linux/FileAttributes.h"

namespace platform {
namespace {

// Large enough to make the calls cheap, small enough to stay in the processor's cache between the read and the write.
constexpr std::size_t blockSize = 128 * 1024;

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

// Lets the system copy the bytes from `at` up to `end`; answers how far it came.
off_t copyWithinTheSystem(int from, int to, off_t at, off_t end) {
  constexpr off_t mostAtOnce = 1 << 30;
  off_t read = at;
  off_t written = at;
  while (read < end) {
    const auto size = static_cast<std::size_t>(std::min(end - read, mostAtOnce));
    const ssize_t copied = ::copy_file_range(from, &read, to, &written, size, 0);
    if (copied < 0 && errno == EINTR) continue;
    if (copied <= 0) break;
  }
  return read;
}

// Leaves out the holes of a file of this size; answers how far it came.
off_t copyData(int from, int to, off_t size) {
  off_t at = 0;
  while (at < size) {
    const off_t data = ::lseek(from, at, SEEK_DATA);
    if (data < 0) return errno == ENXIO ? size : at;  // there is nothing but a hole up to the end
    const off_t hole = std::min(::lseek(from, data, SEEK_HOLE), size);
    if (hole <= data) return at;
    at = copyWithinTheSystem(from, to, data, hole);
    if (at < hole) return at;
  }
  return at;
}

bool copyContents(int from, int to, off_t size) {
  // Where files can share their blocks nothing need be copied.
  if (::ioctl(to, FICLONE, from) == 0) return true;

  // Some systems cannot copy on their own: what is left goes block by block.
  const off_t done = copyData(from, to, size);
  if (done > 0 && (::ftruncate(to, done) != 0 || ::lseek(to, done, SEEK_SET) < 0)) return false;
  (void)::lseek(from, done, SEEK_SET);  // a pipe has no places
  // Some files, those of /proc, hold more than the nothing that they tell. A file that grows is not run after.
  return copyBlocks(from, to, size > 0 ? size - done : std::numeric_limits<off_t>::max());
}

// 0, or the `errno` value.
int copyFileObject(const UniqueFd& from, UniqueFd to) {
  struct stat object {};
  if (::fstat(from.get(), &object) != 0) return errno;
  if (!S_ISREG(object.st_mode)) return ENOTSUP;
  if (!copyContents(from.get(), to.get(), object.st_size)) return errno;
  if (const int error = copyAttributes(from.get(), object, to.get())) return error;
  return ::close(to.release()) == 0 || errno == EINTR ? 0 : errno;  // some disks are full only now
}

Failure copyRegularFile(const std::string& from, const std::string& to) {
  // A pipe may have come into the file's place: it is not waited for.
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!source) return describedError(errno, from);
  UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!copy) return describedError(errno, to);

  const int error = copyFileObject(source, std::move(copy));
  if (error == 0) return std::nullopt;
  (void)::unlink(to.c_str());  // there is nothing better to do with it
  return describedError(error, to);
}

Failure copyLink(const std::string& from, const std::string& to, const struct stat& object) {
  const std::optional<std::string> text = textOfLink(from);
  if (!text) return describedError(errno, from);
  if (::symlink(text->c_str(), to.c_str()) != 0) return describedError(errno, to);
  copyLinkAttributes(object, to);
  return std::nullopt;
}

}  // namespace

bool copyFileContents(const std::string& from, const std::string& to) {
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source) return false;
  const UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (!copy) return false;
  struct stat object {};
  struct stat former {};
  if (::fstat(source.get(), &object) != 0 || ::fstat(copy.get(), &former) != 0 || isSame(object, former)) return false;

  const bool isEmpty = !S_ISREG(former.st_mode) || ::ftruncate(copy.get(), 0) == 0;
  if (isEmpty && copyContents(source.get(), copy.get(), object.st_size)) return true;
  (void)::unlink(to.c_str());  // there is nothing better to do with it
  return false;
}

Failure copyFile(const std::string& from, const std::string& to) {
  struct stat object {};
  if (::lstat(from.c_str(), &object) != 0) return describedError(errno, from);
  if (S_ISLNK(object.st_mode)) return copyLink(from, to, object);
  if (S_ISREG(object.st_mode)) return copyRegularFile(from, to);
  return describedError(ENOTSUP, from);
}

}  // namespace platform
