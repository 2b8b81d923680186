#include "platform/Applications.h"

#include <gio/gio.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace platform {
namespace {

bool hasDisplay() {
  const auto isSet = [](const char* variable) {
    const char* const value = std::getenv(variable);
    return value != nullptr && value[0] != '\0';
  };
  return isSet("DISPLAY") || isSet("WAYLAND_DISPLAY");
}

}  // namespace

bool openUrl(const std::string& url) {
  return isUrl(url) && hasDisplay() && g_app_info_launch_default_for_uri(url.c_str(), nullptr, nullptr) == TRUE;
}

std::optional<ReferenceFailure> failureToRefer(const std::string& path) {
  struct stat item {};
  if (::stat(path.c_str(), &item) == 0) return std::nullopt;
  const int error = errno;
  const char* const name = ::strerrorname_np(error);
  return ReferenceFailure{name == nullptr ? std::to_string(error) : name, g_strerror(error)};
}

bool launchInFront(const std::string& /*path*/, const std::vector<std::string>& /*arguments*/) {
  return false;
}

}  // namespace platform
