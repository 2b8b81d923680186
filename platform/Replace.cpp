#include "platform/Replace.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <utility>

#include "platform/FileKind.h"
#include "platform/Path.h"
#include "platform/Text.h"
#include "platform/TreeRemoval.h"
#include "platform/UniqueFd.h"

namespace platform {
namespace {

bool hasNoName(const std::string& path) {
  const std::string name = lastPathComponent(path);
  return name == "." || name == ".." || name == "/";
}

bool endsInSlash(const std::string& path) {
  return !path.empty() && path.back() == '/';
}

// Returns EINVAL if the folder at `path` is `top` or a folder below it, 0 if not, or the `errno` value of a failure.
//
// Opens the parents one by one: with "/.." for each of them a path could become longer than the system permits. A
// parent that cannot be read is passed by its name.
int errorIfInside(const struct stat& top, const std::string& path) {
  constexpr int kFolder = O_RDONLY | O_DIRECTORY | O_CLOEXEC;
  UniqueFd base(::open(path.c_str(), kFolder));
  std::string name = base ? "." : path;
  const auto at = [&] { return base ? base.get() : AT_FDCWD; };
  struct stat folder {};
  if (::fstatat(at(), name.c_str(), &folder, 0) != 0) return errno;
  while (!isSame(folder, top)) {
    name += "/..";
    struct stat parent {};
    if (::fstatat(at(), name.c_str(), &parent, 0) != 0) return errno;
    if (isSame(parent, folder)) return 0;
    folder = parent;
    if (UniqueFd next(::openat(at(), name.c_str(), kFolder)); next) {
      base = std::move(next);
      name = ".";
    }
  }
  return EINVAL;
}

bool isOnPath(const struct stat& link, const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    struct stat object {};
    if (::lstat(path.substr(0, slash).c_str(), &object) == 0 && isSame(object, link)) return true;
  }
  return false;
}

// Whether the target of a symbolic link is in the folder.
bool targetIsInside(const std::string& link, const struct stat& folder) {
  const std::unique_ptr<char, decltype(&std::free)> target(::realpath(link.c_str(), nullptr), &std::free);
  return target && errorIfInside(folder, parentFolder(target.get())) == EINVAL;
}

// Returns 0 or the error of a replacement that `rename` would permit or report differently.
int errorOfReplacing(const std::string& from, const std::string& to) {
  struct stat object {};
  struct stat target {};
  struct stat folder {};
  struct stat targetFolder {};
  if (::lstat(from.c_str(), &object) != 0 || ::lstat(to.c_str(), &target) != 0 ||
      ::stat(parentFolder(from).c_str(), &folder) != 0 || ::stat(parentFolder(to).c_str(), &targetFolder) != 0)
    return errno;

  if (hasNoName(from)) return EBUSY;
  if (endsInSlash(to) && !S_ISDIR(object.st_mode)) return ENOTDIR;
  if (endsInSlash(from) && linkTarget(withoutTrailingSlashes(from))) return ENOTDIR;
  if (S_ISLNK(object.st_mode) && (isLinkTo(from, to) || (S_ISDIR(target.st_mode) && targetIsInside(from, target))))
    return ELOOP;
  if (S_ISLNK(target.st_mode) && isOnPath(target, from)) return EINVAL;
  if (!S_ISDIR(target.st_mode) || isSame(folder, targetFolder)) return 0;
  return errorIfInside(target, parentFolder(from));
}

// Returns 0 or the `errno` value.
int rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
}

// Does not exchange the two names with RENAME_EXCHANGE:
//
// - If the removal of the old object were interrupted, its remains would have the name `from`, the name of the backup.
// - A folder that is not writable cannot be exchanged with an object that has another parent.
int replaceObject(const std::string& from, const std::string& to) {
  if (const int error = errorOfReplacing(from, to)) return error;

  const std::string target = withoutTrailingSlashes(to);
  const std::string previous = appendingPathComponent(parentFolder(target), "." + randomUuidText());
  if (rename(target, previous) != 0) return EEXIST;
  if (const int error = rename(from, target)) {
    (void)rename(previous, target);
    return error;
  }
  if (!removeTree(previous)) return 0;
  (void)(rename(target, from) == 0 && rename(previous, target) == 0);
  return EEXIST;
}

}  // namespace

int replace(const std::string& from, const std::string& to) {
  return replaceObject(untilNul(from), untilNul(to));
}

}  // namespace platform
