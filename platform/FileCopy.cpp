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

// Fits into the processor's cache.
constexpr std::size_t kBlockSize = 128 * 1024;

// Copies at most `limit` bytes from the current offsets. On failure returns false and sets `errno`.
bool copyBlocks(int from, int to, off_t limit) {
  std::vector<char> block(kBlockSize);
  while (limit > 0) {
    const auto size = static_cast<std::size_t>(std::min<off_t>(limit, kBlockSize));
    const ssize_t got = ::read(from, block.data(), size);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return got == 0;
    if (!writeAll(to, {block.data(), static_cast<std::size_t>(got)})) return false;
    limit -= got;
  }
  return true;
}

// Copies `size` bytes to an empty file, a pipe or a device. A size of 0 means to the end of the file. On failure
// returns false and sets `errno`.
bool copyContents(int from, int to, off_t size) {
  const off_t done = copyData(from, to, size);
  if (done > 0 && (::ftruncate(to, done) != 0 || ::lseek(to, done, SEEK_SET) < 0)) return false;
  (void)::lseek(from, done, SEEK_SET);  // fails for a pipe

  return copyBlocks(from, to, size > 0 ? size - done : std::numeric_limits<off_t>::max());
}

// Copies owner and group, or the group alone. Returns whether the owner was copied.
bool copyOwner(const struct stat& object, int fd) {
  if (::fchown(fd, object.st_uid, object.st_gid) == 0) return true;
  [[maybe_unused]] const int result = ::fchown(fd, static_cast<uid_t>(-1), object.st_gid);
  return false;
}

// Copies owner, group, extended attributes, permission bits, times and access list. Returns 0, or the `errno` value if
// the bits or the times cannot be set.
int copyAttributes(int from, const struct stat& object, int to) {
  const bool ownerKept = copyOwner(object, to);
  copyExtendedAttributes(from, to);
  const mode_t bits = ownerKept ? 07777 : 01777;
  if (::fchmod(to, object.st_mode & bits) != 0) return errno;
  if (::futimens(to, timesOf(object).data()) != 0) return errno;
  copyAccessList(from, to);
  return 0;
}

// Failures are ignored.
void copyLinkAttributes(const struct stat& object, const std::string& to) {
  [[maybe_unused]] const int result = ::lchown(to.c_str(), object.st_uid, object.st_gid);
  (void)::utimensat(AT_FDCWD, to.c_str(), timesOf(object).data(), AT_SYMLINK_NOFOLLOW);
}

// Returns 0 or the `errno` value.
int copyFileObject(const UniqueFd& from, UniqueFd to) {
  struct stat object {};
  if (::fstat(from.get(), &object) != 0) return errno;
  if (!S_ISREG(object.st_mode)) return ENOTSUP;
  if (!copyContents(from.get(), to.get(), object.st_size)) return errno;
  if (const int error = copyAttributes(from.get(), object, to.get())) return error;
  return ::close(to.release()) == 0 || errno == EINTR ? 0 : errno;  // network file systems report a full disk here
}

Failure copyRegularFile(const std::string& from, const std::string& to) {
  // O_NONBLOCK: the file may have been replaced by a pipe.
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!source) return errorWithPath(errno, from);
  UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600));
  if (!copy) return errorWithPath(errno, to);

  const int error = copyFileObject(source, std::move(copy));
  if (error == 0) return std::nullopt;
  (void)::unlink(to.c_str());
  return errorWithPath(error, to);
}

Failure copyLink(const std::string& from, const std::string& to, const struct stat& object) {
  const std::optional<std::string> target = linkTarget(from);
  if (!target) return errorWithPath(errno, from);
  if (::symlink(target->c_str(), to.c_str()) != 0) return errorWithPath(errno, to);
  copyLinkAttributes(object, to);
  return std::nullopt;
}

}  // namespace

bool copyFileContents(const std::string& from, const std::string& to) {
  const UniqueFd source(::open(from.c_str(), O_RDONLY | O_CLOEXEC));
  if (!source) return false;
  UniqueFd copy(::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
  const bool isNew = static_cast<bool>(copy);
  // A dangling link exists too; its target is created.
  if (!isNew && errno == EEXIST) copy.reset(::open(to.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666));
  if (!copy) return false;
  struct stat object {};
  struct stat target {};
  if (::fstat(source.get(), &object) != 0 || ::fstat(copy.get(), &target) != 0 || isSame(object, target)) return false;

  const bool isFile = S_ISREG(target.st_mode);
  const bool isEmpty = !isFile || ::ftruncate(copy.get(), 0) == 0;
  if (isEmpty && copyContents(source.get(), copy.get(), object.st_size)) return true;
  if (isFile) (void)!::ftruncate(copy.get(), 0);
  if (isNew) (void)::unlink(to.c_str());
  return false;
}

bool copyFileContents(int from, int to) {
  struct stat object {};
  return ::fstat(from, &object) == 0 && copyContents(from, to, object.st_size);
}

Failure copyFile(const std::string& from, const std::string& to) {
  struct stat object {};
  if (::lstat(from.c_str(), &object) != 0) return errorWithPath(errno, from);
  if (S_ISLNK(object.st_mode)) return copyLink(from, to, object);
  if (S_ISREG(object.st_mode)) return copyRegularFile(from, to);
  return errorWithPath(ENOTSUP, from);
}

}  // namespace platform
