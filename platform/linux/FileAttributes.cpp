#include "platform/FileAttributes.h"

#include <linux/limits.h>
#include <sys/xattr.h>

#include <cerrno>
#include <cstddef>
#include <vector>

namespace platform {
namespace {

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

}  // namespace

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

void copyAccessList(int /*from*/, int /*to*/) {}

std::array<timespec, 2> timesOf(const struct stat& object) {
  return {object.st_atim, object.st_mtim};
}

}  // namespace platform
