#include "platform/FileCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <limits>
#include <optional>
#include <utility>
#include <vector>

#include "platform/FileKind.h"
#include "platform/UniqueFd.h"

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

// Copies a file of `size` bytes to an empty one, the holes as holes where they can be told, or into a pipe or a device.
// A size of 0 stands for one that is not told: all there is. False, with `errno`, when a byte cannot be read or
// written.
bool copyContents(int from, int to, off_t size) {
  const off_t done = copyData(from, to, size);
  if (done > 0 && (::ftruncate(to, done) != 0 || ::lseek(to, done, SEEK_SET) < 0)) return false;
  (void)::lseek(from, done, SEEK_SET);  // a pipe has no places

  // What the system has not copied by itself goes block by block.
  // Some files, those of /proc, hold more than the nothing that they tell. A file that grows is not run after.
  return copyBlocks(from, to, size > 0 ? size - done : std::numeric_limits<off_t>::max());
}

// False when the owner has not been kept; the group may have been all the same.
bool giveTo(const struct stat& object, int fd) {
  if (::fchown(fd, object.st_uid, object.st_gid) == 0) return true;
  [[maybe_unused]] const int kept = ::fchown(fd, static_cast<uid_t>(-1), object.st_gid);
  return false;
}

// Owner and group, extended attributes, permission bits and times, those of `object` and of the open file `from`.
// 0, or the `errno` value when bits or times could not be set.
int copyAttributes(int from, const struct stat& object, int to) {
  const bool ownerKept = giveTo(object, to);
  copyExtendedAttributes(from, to);
  const mode_t bits = ownerKept ? 07777 : 01777;
  if (::fchmod(to, object.st_mode & bits) != 0) return errno;
  if (::futimens(to, timesOf(object).data()) != 0) return errno;
  copyAccessList(from, to);
  return 0;
}

// Owner, group and times of a symbolic link, as far as they can be set.
void copyLinkAttributes(const struct stat& object, const std::string& to) {
  [[maybe_unused]] const int given = ::lchown(to.c_str(), object.st_uid, object.st_gid);
  (void)::utimensat(AT_FDCWD, to.c_str(), timesOf(object).data(), AT_SYMLINK_NOFOLLOW);
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
  UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  const bool isNew = static_cast<bool>(copy);
  // A dangling link exists too, and what it leads to is created.
  if (!isNew && errno == EEXIST) copy.reset(::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (!copy) return false;
  struct stat object {};
  struct stat former {};
  if (::fstat(source.get(), &object) != 0 || ::fstat(copy.get(), &former) != 0 || isSame(object, former)) return false;

  const bool isFile = S_ISREG(former.st_mode);
  const bool isEmpty = !isFile || ::ftruncate(copy.get(), 0) == 0;
  if (isEmpty && copyContents(source.get(), copy.get(), object.st_size)) return true;
  // Nothing better can be done when these fail.
  if (isFile) (void)!::ftruncate(copy.get(), 0);
  if (isNew) (void)::unlink(to.c_str());
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
