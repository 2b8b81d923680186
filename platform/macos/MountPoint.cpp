#include <sys/mount.h>

#include <cerrno>
#include <optional>
#include <string>

#include "platform/Volumes.h"

namespace platform {

std::optional<std::string> mountPointOf(const std::string& path) {
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return system.f_mntonname;
}

}  // namespace platform
