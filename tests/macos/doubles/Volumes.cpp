// Mount points, and the names and parameters of volumes. Mount points are those of Linux: the topmost folder with the
// same mount id.

#include "tests/macos/doubles/Volumes.h"

#include <CoreServices/CoreServices.h>
#include <fcntl.h>
#include <sys/mount.h>
#include <sys/param.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>

#include "platform/Path.h"
#include "tests/macos/doubles/SystemDoubles.h"

namespace {

constexpr FSVolumeRefNum kVolumeNumber = -100;

bool areOnOneMount(const std::string& path, const std::string& other) {
  struct statx item {};
  struct statx otherItem {};
  return ::statx(AT_FDCWD, path.c_str(), 0, STATX_MNT_ID, &item) == 0 &&
         ::statx(AT_FDCWD, other.c_str(), 0, STATX_MNT_ID, &otherItem) == 0 && item.stx_mnt_id == otherItem.stx_mnt_id;
}

}  // namespace

int statfs(const char* path, struct statfs* system) {
  const bool isTooLong = ::strnlen(path, MAXPATHLEN) == MAXPATHLEN;
  if (const int error = isTooLong ? ENAMETOOLONG : doubles::statusOf("statfs")) {
    errno = error;
    return -1;
  }
  const std::unique_ptr<char, void (*)(void*)> real(::realpath(path, nullptr), std::free);
  if (!real) return -1;
  std::string mountPoint = real.get();
  while (mountPoint != "/" && areOnOneMount(mountPoint, platform::deletingLastPathComponent(mountPoint)))
    mountPoint = platform::deletingLastPathComponent(mountPoint);
  (void)mountPoint.copy(system->f_mntonname, sizeof system->f_mntonname - 1);
  return 0;
}

OSErr FSGetCatalogInfo(const FSRef*, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo, HFSUniStr255*,
                       FSSpecPtr, FSRef*) {
  if (const int status = doubles::statusOf("FSGetCatalogInfo")) return static_cast<OSErr>(status);
  if ((whichInfo & kFSCatInfoVolume) != 0) catalogInfo->volume = kVolumeNumber;
  return noErr;
}

OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount, FSVolumeRefNum*, FSVolumeInfoBitmap, FSVolumeInfo*,
                      HFSUniStr255* volumeName, FSRef*) {
  if (const int status = doubles::statusOf("FSGetVolumeInfo")) return static_cast<OSErr>(status);
  if (volume != kVolumeNumber) return nsvErr;
  const std::u16string& name = doubles::volume.name;
  volumeName->length = static_cast<UInt16>(name.size());
  std::copy(name.begin(), name.end(), volumeName->unicode);
  return noErr;
}

OSStatus FSGetVolumeParms(FSVolumeRefNum volume, GetVolParmsInfoBuffer* buffer, ByteCount bufferSize) {
  if (const int status = doubles::statusOf("FSGetVolumeParms")) return status;
  if (volume != kVolumeNumber) return nsvErr;
  if (bufferSize < sizeof *buffer) return paramErr;
  buffer->vMVersion = static_cast<SInt16>(doubles::volume.recordVersion);
  buffer->vMExtendedAttributes = doubles::volume.extendedAttributes;
  return noErr;
}
