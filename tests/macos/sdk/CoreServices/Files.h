// The File Manager.

#pragma once

#include <CoreServices/MacTypes.h>

using FSVolumeRefNum = SInt16;
using FSCatalogInfoBitmap = UInt32;
using FSVolumeInfoBitmap = UInt32;

enum : FSCatalogInfoBitmap { kFSCatInfoVolume = 0x00000004 };
enum : FSVolumeInfoBitmap { kFSVolInfoNone = 0x0000 };
enum { bIsCaseSensitive = 22 };

#pragma pack(push, 2)

// A reference to a file or folder. It stays valid if the path changes.
struct FSRef {
  UInt8 hidden[80];
};
static_assert(sizeof(FSRef) == 80);

struct FSSpec {
  UInt8 hidden[70];
};
static_assert(sizeof(FSSpec) == 70);
using FSSpecPtr = FSSpec*;

struct UTCDateTime {
  UInt16 highSeconds;
  UInt32 lowSeconds;
  UInt16 fraction;
};

struct FSPermissionInfo {
  UInt32 userID;
  UInt32 groupID;
  UInt8 reserved1;
  UInt8 userAccess;
  UInt16 mode;
  void* fileSec;
};
static_assert(sizeof(FSPermissionInfo) == 20);

struct FSCatalogInfo {
  UInt16 nodeFlags;
  FSVolumeRefNum volume;
  UInt32 parentDirID;
  UInt32 nodeID;
  UInt8 sharingFlags;
  UInt8 userPrivileges;
  UInt8 reserved1;
  UInt8 reserved2;
  UTCDateTime createDate;
  UTCDateTime contentModDate;
  UTCDateTime attributeModDate;
  UTCDateTime accessDate;
  UTCDateTime backupDate;
  FSPermissionInfo permissions;
  UInt8 finderInfo[16];
  UInt8 extFinderInfo[16];
  UInt64 dataLogicalSize;
  UInt64 dataPhysicalSize;
  UInt64 rsrcLogicalSize;
  UInt64 rsrcPhysicalSize;
  UInt32 valence;
  UInt32 textEncodingHint;
};
static_assert(sizeof(FSCatalogInfo) == 148);

struct HFSUniStr255 {
  UInt16 length;
  UniChar unicode[255];
};
static_assert(sizeof(HFSUniStr255) == 512);

struct GetVolParmsInfoBuffer {
  SInt16 vMVersion;
  SInt32 vMAttrib;
  Handle vMLocalHand;
  SInt32 vMServerAdr;
  SInt32 vMVolumeGrade;
  SInt16 vMForeignPrivID;
  SInt32 vMExtendedAttributes;
  void* vMDeviceID;
  UniCharCount vMMaxNameLength;
};
static_assert(sizeof(GetVolParmsInfoBuffer) == 44);

#pragma pack(pop)

struct FSVolumeInfo;

extern "C" {
OSStatus FSPathMakeRef(const UInt8* path, FSRef* ref, Boolean* isDirectory) SDK_DEPRECATED;
OSStatus FSRefMakePath(const FSRef* ref, UInt8* path, UInt32 pathBufferSize) SDK_DEPRECATED;
OSErr FSGetCatalogInfo(const FSRef* ref, FSCatalogInfoBitmap whichInfo, FSCatalogInfo* catalogInfo,
                       HFSUniStr255* outName, FSSpecPtr fsSpec, FSRef* parentRef) SDK_DEPRECATED;
OSErr FSGetVolumeInfo(FSVolumeRefNum volume, ItemCount volumeIndex, FSVolumeRefNum* actualVolume,
                      FSVolumeInfoBitmap whichInfo, FSVolumeInfo* info, HFSUniStr255* volumeName,
                      FSRef* rootDirectory) SDK_DEPRECATED;
OSStatus FSGetVolumeParms(FSVolumeRefNum volume, GetVolParmsInfoBuffer* buffer, ByteCount bufferSize) SDK_DEPRECATED;
}
