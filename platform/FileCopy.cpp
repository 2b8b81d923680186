#include "platform/FileCopy.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "platform/FileAttributes.h"
#include "platform/FileContents.h"
#include "platform/FileKind.h"
#include "platform/UniqueFd.h"

namespace platform {
namespace {

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
