// The system's own copy of files, of which the access list and the extended attributes are one thing here.

#include <copyfile.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>

#include "tests/macos/doubles/SystemCalls.h"

namespace {

// A list may forbid its owner to set times and bits.
std::string whatIsSet(int fd) {
  struct stat item {};
  (void)::fstat(fd, &item);
  return " after mode " + std::to_string(item.st_mode & 07777) + " and time " + std::to_string(item.st_mtime);
}

}  // namespace

int fcopyfile(int from_fd, int to_fd, copyfile_state_t, copyfile_flags_t flags) {
  doubles::noteCall("fcopyfile " + std::to_string(flags) + (flags == COPYFILE_ACL ? whatIsSet(to_fd) : ""));
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
