#include <cerrno>
#include <optional>
#include <string>

#include "applog/Logger.h"
#include "nativeutils/Component.h"
#include "nativeutils/System.h"
#include "platform/EventLoop.h"
#include "platform/Path.h"
#include "platform/Volumes.h"

using nativeutils::kComponent;

namespace {

// Returns the mount point of the path or, if it does not exist, of its nearest existing ancestor.
std::optional<std::string> mountPointOfNearest(std::string path) {
  for (;;) {
    std::optional<std::string> mountPoint = platform::mountPointOf(path);
    if (mountPoint) return mountPoint;
    const bool isMissing = errno == ENOENT || errno == ENAMETOOLONG;
    if (!isMissing || !platform::cutLastComponent(path)) return std::nullopt;
  }
}

}  // namespace

bool util_getVolumePath(const std::string& path, std::string& volumePath) {
  const platform::AutoreleaseScope scope;
  const bool absolute = !path.empty() && path.front() == '/';
  const std::optional<std::string> mountPoint = absolute ? mountPointOfNearest(path) : std::nullopt;
  if (!mountPoint) {
    Logger::getInstance()->logError(kComponent, "Error in getting ... util_getVolumePath");
    return false;
  }
  volumePath = *mountPoint;
  return true;
}

bool utilGetVolumeNameOfPath(const std::string& path, std::string& volumeName) {
  const platform::AutoreleaseScope scope;
  if (path.empty()) {
    Logger::getInstance()->logWarn(kComponent, "utilGetVolumeNameOfPath empty path");
    return false;
  }
  std::string mountPoint;
  if (!util_getVolumePath(path, mountPoint)) {
    Logger::getInstance()->logWarn(kComponent, "utilGetVolumeNameOfPath failed to get volume path.");
    return false;
  }
  const std::optional<std::string> name = platform::volumeNameOf(mountPoint);
  if (!name) return false;
  volumeName = *name;
  return true;
}

// NOLINTNEXTLINE(performance-unnecessary-value-param): the signature is fixed by the interface
bool utilIsDriveCaseSensitive(std::string path, bool& caseSensitive) {
  const platform::AutoreleaseScope scope;
  const std::optional<bool> result = platform::isCaseSensitive(path);
  if (!result) return false;
  caseSensitive = *result;
  return true;
}
