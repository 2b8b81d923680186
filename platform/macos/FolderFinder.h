// The system's finder of well-known folders.

#pragma once

#include <CoreServices/CoreServices.h>

#include "platform/Folders.h"

namespace platform {

// The folder of this kind in this domain, made when it is missing. Thread-safe.
FolderSearch folderOf(FSVolumeRefNum domain, OSType kind);

}  // namespace platform
