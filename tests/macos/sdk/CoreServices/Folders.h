// The Folder Manager.

#pragma once

#include <CoreServices/Files.h>
#include <CoreServices/MacTypes.h>

enum {
  kOnSystemDisk = -32768,
  kLocalDomain = -32765,
  kUserDomain = -32763,
};

enum {
  kDontCreateFolder = false,
  kCreateFolder = true,
};

enum : OSType {
  kVolumeRootFolderType = 'root',
  kApplicationSupportFolderType = 'asup',
  kApplicationsFolderType = 'apps',
  kUtilitiesFolderType = 'uti\xC4',
};

extern "C" {
OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) SDK_DEPRECATED;
}
