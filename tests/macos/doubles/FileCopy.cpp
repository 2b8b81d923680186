#include "tests/macos/doubles/FileCopy.h"

#include <copyfile.h>
#include <sys/xattr.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

#include "tests/macos/doubles/SystemDoubles.h"

// Copies all extended attributes, which include the access list on Linux.
int fcopyfile(int from_fd, int to_fd, copyfile_state_t, copyfile_flags_t flags) {
  if (flags == COPYFILE_ACL) {
    struct stat target {};
    if (::fstat(to_fd, &target) == 0) doubles::accessListTarget = target;
  }
  if (const int error = doubles::statusOf("fcopyfile")) {
    errno = error;
    return -1;
  }
  std::string names(65536, '\0');
  const ssize_t size = ::flistxattr(from_fd, names.data(), names.size());
  names.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
  std::string value(65536, '\0');
  for (std::size_t at = 0; at < names.size(); at += std::strlen(&names[at]) + 1) {
    const ssize_t length = ::fgetxattr(from_fd, &names[at], value.data(), value.size());
    if (length >= 0) (void)::fsetxattr(to_fd, &names[at], value.data(), static_cast<std::size_t>(length), 0);
  }
  return 0;
}
