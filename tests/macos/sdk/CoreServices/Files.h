// The File Manager.

#pragma once

#include <CoreServices/MacTypes.h>

// Names a file or a folder, whatever its path is meanwhile.
struct FSRef {
  UInt8 hidden[80];
};

extern "C" {
OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) SDK_DEPRECATED;
OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize) SDK_DEPRECATED;
}
