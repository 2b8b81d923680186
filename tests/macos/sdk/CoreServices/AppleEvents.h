// Apple events and their descriptors.

#pragma once

#include <CoreServices/MacTypes.h>

using Size = long;
using DescType = FourCharCode;
using AEEventClass = FourCharCode;
using AEEventID = FourCharCode;
using AEReturnID = SInt16;
using AETransactionID = SInt32;
using AEDataStorageType = struct OpaqueAEDataStorageType*;
using AEDataStorage = AEDataStorageType*;

#pragma pack(push, 2)

struct AEDesc {
  DescType descriptorType;
  AEDataStorage dataHandle;
};
static_assert(sizeof(AEDesc) == 12);

#pragma pack(pop)

using AEAddressDesc = AEDesc;
using AppleEvent = AEDesc;

enum : DescType {
  typeNull = 0x6E756C6C,                 // "null"
  typeProcessSerialNumber = 0x70736E20,  // "psn "
  typeAppleEvent = 0x61657674,           // "aevt"
};
enum : AEEventClass { kAEMiscStandards = 0x6D697363 };  // "misc"
enum : AEEventID { kAEActivate = 0x61637476 };          // "actv"
enum { kAutoGenerateReturnID = -1, kAnyTransactionID = 0 };

extern "C" {
OSErr AECreateDesc(DescType typeCode, const void* dataPtr, Size dataSize, AEDesc* result);
OSErr AECreateAppleEvent(AEEventClass theAEEventClass, AEEventID theAEEventID, const AEAddressDesc* target,
                         AEReturnID returnID, AETransactionID transactionID, AppleEvent* result);
OSErr AEDisposeDesc(AEDesc* theAEDesc);
}
