// The Folder Manager.

#pragma once

#include <CoreServices/Files.h>
#include <CoreServices/MacTypes.h>

enum {
  kOnSystemDisk SDK_DEPRECATED = -32768,
  kLocalDomain SDK_DEPRECATED = -32765,
  kUserDomain SDK_DEPRECATED = -32763,
};

enum {
  kDontCreateFolder SDK_DEPRECATED = false,
  kCreateFolder SDK_DEPRECATED = true,
};

enum : OSType {
  kVolumeRootFolderType SDK_DEPRECATED = 'root',
  kApplicationSupportFolderType SDK_DEPRECATED = 'asup',
  kApplicationsFolderType SDK_DEPRECATED = 'apps',
  kUtilitiesFolderType SDK_DEPRECATED = 'uti\xC4',
};

extern "C" {
OSErr FSFindFolder(FSVolumeRefNum vRefNum, OSType folderType, Boolean createFolder, FSRef* foundRef) SDK_DEPRECATED;
}
