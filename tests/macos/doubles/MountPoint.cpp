// What macOS says of mounted file systems, found in the way of the system below: the topmost folder of a mount is where
// it is mounted.

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/Path.h"
#include "tests/macos/doubles/SystemCalls.h"

namespace {

bool isOneMount(const std::string& path, const std::string& other) {
  struct statx item {};
  struct statx otherItem {};
  return ::statx(AT_FDCWD, path.c_str(), 0, STATX_MNT_ID, &item) == 0 &&
         ::statx(AT_FDCWD, other.c_str(), 0, STATX_MNT_ID, &otherItem) == 0 && item.stx_mnt_id == otherItem.stx_mnt_id;
}

}  // namespace

int statfs(const char* path, struct statfs* system) {
  const std::size_t length = ::strnlen(path, MAXPATHLEN);
  doubles::noteCall("statfs " + std::string(path, length));
  const int error = length == MAXPATHLEN ? ENAMETOOLONG : doubles::statusOf("statfs");
  if (error != 0) {
    errno = error;
    return -1;
  }
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path, nullptr), std::free);
  if (!real) return -1;
  std::string place = real.get();
  while (place != "/" && isOneMount(place, platform::deletingLastPathComponent(place)))
    place = platform::deletingLastPathComponent(place);
  (void)place.copy(system->f_mntonname, sizeof system->f_mntonname - 1);
  return 0;
}
