#include "platform/macos/FolderFinder.h"

#include "platform/Text.h"

namespace platform {

#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
FolderSearch folderOf(FSVolumeRefNum domain, OSType kind) {
  using Failure = FolderSearch::Failure;
  FSRef folder = {};
  if (const OSStatus status = FSFindFolder(domain, kind, kCreateFolder, &folder)) return {Failure::find, status, ""};
  char path[1024] = {};
  if (const OSStatus status = FSRefMakePath(&folder, reinterpret_cast<UInt8*>(path), sizeof path))
    return {Failure::path, status, ""};
  if (!isUtf8(path)) return {Failure::text, noErr, ""};
  return {Failure::none, noErr, path};
}
#pragma GCC diagnostic pop

}  // namespace platform
