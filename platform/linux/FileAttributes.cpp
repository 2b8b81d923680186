#include "platform/linux/FileAttributes.h"

#include <fcntl.h>
#include <linux/limits.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

namespace platform {
namespace {

// False when the owner has not been kept; the group may have been all the same.
bool giveTo(const struct stat& object, int fd) {
  if (::fchown(fd, object.st_uid, object.st_gid) == 0) return true;
  [[maybe_unused]] const int kept = ::fchown(fd, static_cast<uid_t>(-1), object.st_gid);
  return false;
}

std::vector<char> attributeNames(int fd) {
  for (int tries = 0; tries < 10; ++tries) {
    const ssize_t size = ::flistxattr(fd, nullptr, 0);
    if (size <= 0) return {};
    std::vector<char> names(static_cast<std::size_t>(size));
    const ssize_t got = ::flistxattr(fd, names.data(), names.size());
    if (got < 0 && errno == ERANGE) continue;  // another one has come meanwhile
    names.resize(got < 0 ? 0 : static_cast<std::size_t>(got));
    return names;
  }
  return {};
}

// What the other file system does not take, or this user may not set, is left out.
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

}  // namespace

int copyAttributes(int from, const struct stat& object, int to) {
  const bool ownerKept = giveTo(object, to);
  copyExtendedAttributes(from, to);
  const mode_t bits = ownerKept ? 07777 : 01777;
  if (::fchmod(to, object.st_mode & bits) != 0) return errno;
  const timespec times[] = {object.st_atim, object.st_mtim};
  return ::futimens(to, times) == 0 ? 0 : errno;
}

void copyLinkAttributes(const struct stat& object, const std::string& to) {
  [[maybe_unused]] const int given = ::lchown(to.c_str(), object.st_uid, object.st_gid);
  const timespec times[] = {object.st_atim, object.st_mtim};
  (void)::utimensat(AT_FDCWD, to.c_str(), times, AT_SYMLINK_NOFOLLOW);
}

}  // namespace platform
