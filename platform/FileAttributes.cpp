#include "platform/FileAttributes.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {
namespace {

// False when the owner has not been kept; the group may have been all the same.
bool giveTo(const struct stat& object, int fd) {
  if (::fchown(fd, object.st_uid, object.st_gid) == 0) return true;
  [[maybe_unused]] const int kept = ::fchown(fd, static_cast<uid_t>(-1), object.st_gid);
  return false;
}

}  // namespace

int copyAttributes(int from, const struct stat& object, int to) {
  const bool ownerKept = giveTo(object, to);
  copyExtendedAttributes(from, to);
  const mode_t bits = ownerKept ? 07777 : 01777;
  if (::fchmod(to, object.st_mode & bits) != 0) return errno;
  if (::futimens(to, timesOf(object).data()) != 0) return errno;
  copyAccessList(from, to);
  return 0;
}

void copyLinkAttributes(const struct stat& object, const std::string& to) {
  [[maybe_unused]] const int given = ::lchown(to.c_str(), object.st_uid, object.st_gid);
  (void)::utimensat(AT_FDCWD, to.c_str(), timesOf(object).data(), AT_SYMLINK_NOFOLLOW);
}

}  // namespace platform
