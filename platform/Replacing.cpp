#include "platform/Replacing.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <memory>

#include "platform/FileKind.h"
#include "platform/Path.h"

namespace platform {
namespace {

bool hasNoNameOfItsOwn(const std::string& path) {
  const std::string name = lastPathComponent(path);
  return name == "." || name == ".." || name == "/";
}

bool endsInSlash(const std::string& path) {
  return !path.empty() && path.back() == '/';
}

// EINVAL when the folder at `path` is `top` or lies in it, at whatever depth; else 0, or why that cannot be told.
int errorOfLyingIn(const struct stat& top, std::string path) {
  struct stat here {};
  if (::stat(path.c_str(), &here) != 0) return errno;
  while (!isSame(here, top)) {
    path += "/..";
    struct stat above {};
    if (::stat(path.c_str(), &above) != 0) return errno;
    if (isSame(above, here)) return 0;
    here = above;
  }
  return EINVAL;
}

// Whether the path names, on its way, the symbolic link itself.
bool isReachedBy(const struct stat& link, const std::string& path) {
  for (std::size_t slash = path.find('/', 1); slash != std::string::npos; slash = path.find('/', slash + 1)) {
    struct stat object {};
    if (::lstat(path.substr(0, slash).c_str(), &object) == 0 && isSame(object, link)) return true;
  }
  return false;
}

// Whether what a symbolic link leads to lies in the folder.
bool leadsInto(const std::string& link, const struct stat& folder) {
  const std::unique_ptr<char, decltype(&std::free)> reached(::realpath(link.c_str(), nullptr), &std::free);
  return reached && errorOfLyingIn(folder, parentFolder(reached.get())) == EINVAL;
}

bool may(int what, const std::string& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), what, AT_EACCESS) == 0;
}

// In a folder of the kind of /tmp everybody may take away what is theirs.
bool isKeptByOthers(const struct stat& object, const struct stat& folder) {
  const uid_t user = ::geteuid();
  return (folder.st_mode & S_ISVTX) != 0 && user != 0 && object.st_uid != user && folder.st_uid != user;
}

// The two paths, what is at them, and the folders that hold it.
class Replacing {
 public:
  Replacing(const std::string& from, const std::string& to) : from_(from), to_(to) {}

  int obstacle() {
    if (const int error = look()) return error;
    if (hasNoNameOfItsOwn(from_)) return EBUSY;
    if (needsToBeAFolder()) return ENOTDIR;
    if (folder_.st_dev != place_.st_dev) return EXDEV;
    if (S_ISLNK(object_.st_mode) && linksTo()) return ELOOP;
    if (S_ISLNK(target_.st_mode) && isReachedBy(target_, from_)) return EINVAL;
    if (const int error = errorOfHolding()) return error;
    return errorOfTaking();
  }

 private:
  int look() {
    const bool seen = ::lstat(from_.c_str(), &object_) == 0 && ::lstat(to_.c_str(), &target_) == 0 &&
                      ::stat(parentFolder(from_).c_str(), &folder_) == 0 &&
                      ::stat(parentFolder(to_).c_str(), &place_) == 0;
    return seen ? 0 : errno;
  }

  bool needsToBeAFolder() const {
    if (endsInSlash(to_) && !S_ISDIR(object_.st_mode)) return true;
    return endsInSlash(from_) && linkTarget(withoutTrailingSlashes(from_)).has_value();
  }

  bool linksTo() const { return isLinkTo(from_, to_) || (S_ISDIR(target_.st_mode) && leadsInto(from_, target_)); }

  // A folder does not lie in what lies beside it.
  int errorOfHolding() const {
    if (isSame(folder_, place_)) return 0;
    if (S_ISDIR(target_.st_mode)) {
      if (const int error = errorOfLyingIn(target_, parentFolder(from_))) return error;
    }
    return S_ISDIR(object_.st_mode) ? errorOfLyingIn(object_, parentFolder(to_)) : 0;
  }

  // Where nothing at `to` can be removed, nothing is lost either, and the removal tells why.
  int errorOfTaking() const {
    if (isKeptByOthers(object_, folder_)) return EPERM;
    if (isSame(folder_, place_) || !may(W_OK | X_OK, parentFolder(to_))) return 0;
    if (!may(W_OK | X_OK, parentFolder(from_))) return EACCES;
    // A folder that moves gets another "..", which is written into it.
    return S_ISDIR(object_.st_mode) && !may(W_OK, from_) ? EACCES : 0;
  }

  std::string from_;
  std::string to_;
  struct stat object_ {};
  struct stat target_ {};
  struct stat folder_ {};
  struct stat place_ {};
};

}  // namespace

int obstacleToReplacing(const std::string& from, const std::string& to) {
  return Replacing(untilNul(from), untilNul(to)).obstacle();
}

}  // namespace platform
