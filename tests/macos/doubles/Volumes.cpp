#include "tests/macos/doubles/Volumes.h"

#include <CoreServices/CoreServices.h>

#include <algorithm>

#include "tests/macos/doubles/FileManager.h"
#include "tests/macos/doubles/SystemCalls.h"

OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo, HFSUniStr255*,
                       FSSpecPtr, FSRef*) {
  doubles::noteCall("FSGetCatalogInfo " + doubles::pathOf(*ref) + ' ' + std::to_string(whichInfo));
  if (const int status = doubles::statusOf("FSGetCatalogInfo")) return static_cast<OSErr>(status);
  if ((whichInfo & kFSCatInfoVolume) != 0) catalogInfo->volume = doubles::volumeNumber;
  return noErr;
}

OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum*, FSVolumeInfoBitmap whichInfo,
                      FSVolumeInfo*, HFSUniStr255* volumeName, FSRef*) {
  doubles::noteCall("FSGetVolumeInfo " + std::to_string(volume) + ' ' + std::to_string(volumeIndex) + ' ' +
                    std::to_string(whichInfo));
  if (const int status = doubles::statusOf("FSGetVolumeInfo")) return static_cast<OSErr>(status);
  const std::u16string& name = doubles::volume.name;
  volumeName->length = static_cast<UInt16>(name.size());
  std::copy(name.begin(), name.end(), volumeName->unicode);
  return noErr;
}

OSStatus FSGetVolumeParms(FSVolumeRefNum volume, GetVolParmsInfoBuffer* buffer, ByteCount bufferSize) {
  doubles::noteCall("FSGetVolumeParms " + std::to_string(volume) + ' ' + std::to_string(bufferSize));
  if (const int status = doubles::statusOf("FSGetVolumeParms")) return status;
  buffer->vMVersion = static_cast<SInt16>(doubles::volume.recordVersion);
  buffer->vMExtendedAttributes = doubles::volume.extendedAttributes;
  return noErr;
}
