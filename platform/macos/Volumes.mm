#include "platform/Volumes.h"

#include <CoreServices/CoreServices.h>
#import <Foundation/Foundation.h>
#include <sys/mount.h>

#include <cerrno>
#include <optional>
#include <string>

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"

namespace platform {
namespace {

std::optional<FSVolumeRefNum> volumeOf(const std::string& path) {
  FSRef item = {};
  if (FSPathMakeRef(reinterpret_cast<const UInt8*>(path.c_str()), &item, nullptr) != noErr) return std::nullopt;
  FSCatalogInfo entry = {};
  if (FSGetCatalogInfo(&item, kFSCatInfoVolume, &entry, nullptr, nullptr, nullptr) != noErr) return std::nullopt;
  return entry.volume;
}

}  // namespace

std::optional<std::string> volumeNameOf(const std::string& mountPoint) {
  const std::optional<FSVolumeRefNum> volume = volumeOf(mountPoint);
  HFSUniStr255 name = {};
  if (!volume || FSGetVolumeInfo(*volume, 0, nullptr, kFSVolInfoNone, nullptr, &name, nullptr) != noErr)
    return std::nullopt;
  const char* const text = [[NSString stringWithCharacters:name.unicode length:name.length] UTF8String];
  if (text == nullptr) return std::nullopt;
  return text;
}

std::optional<bool> isCaseSensitive(const std::string& path) {
  const std::optional<FSVolumeRefNum> volume = volumeOf(path);
  GetVolParmsInfoBuffer parameters = {};
  if (!volume || FSGetVolumeParms(*volume, &parameters, sizeof parameters) != noErr) return std::nullopt;
  // Records of older versions end before the attributes.
  return parameters.vMVersion >= 3 && (parameters.vMExtendedAttributes & (1 << bIsCaseSensitive)) != 0;
}

std::optional<std::string> mountPointOf(const std::string& path) {
  struct statfs system {};
  while (::statfs(path.c_str(), &system) != 0) {
    if (errno != EINTR) return std::nullopt;
  }
  return system.f_mntonname;
}

}  // namespace platform

#pragma GCC diagnostic pop
