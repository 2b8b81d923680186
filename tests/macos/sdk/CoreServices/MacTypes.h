// The basic types of the C interfaces.

#pragma once

#include <Deprecated.h>

#include <cstdint>

using UInt8 = std::uint8_t;
using SInt8 = std::int8_t;
using UInt16 = std::uint16_t;
using SInt16 = std::int16_t;
using UInt32 = std::uint32_t;
using SInt32 = std::int32_t;
using UInt64 = std::uint64_t;
using SInt64 = std::int64_t;
using UniChar = UInt16;
using UniCharCount = unsigned long;
using Ptr = char*;
using Handle = Ptr*;
using Boolean = unsigned char;
using OSErr = SInt16;
using OSStatus = SInt32;
using ByteCount = unsigned long;
using ItemCount = unsigned long;
using FourCharCode = UInt32;
using OSType = FourCharCode;

constexpr OSStatus noErr = 0;

struct ProcessSerialNumber {
  UInt32 highLongOfPSN;
  UInt32 lowLongOfPSN;
};
