// The functions of Core Foundation that the program uses. Its strings and arrays are Foundation objects.

#pragma once

#include <CoreServices/MacTypes.h>

using CFTypeRef = const void*;
using CFStringRef = const struct __CFString*;
using CFArrayRef = const struct __CFArray*;
using CFDictionaryRef = const struct __CFDictionary*;
using CFUUIDRef = const struct __CFUUID*;
using CFAllocatorRef = const struct __CFAllocator*;
using CFIndex = signed long;
using CFStringEncoding = UInt32;

enum : CFStringEncoding { kCFStringEncodingUTF8 = 0x08000100 };

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;
void CFRelease(CFTypeRef object);
Boolean CFStringGetCString(CFStringRef string, char* buffer, CFIndex bufferSize, CFStringEncoding encoding);
CFUUIDRef CFUUIDCreate(CFAllocatorRef allocator);
CFStringRef CFUUIDCreateString(CFAllocatorRef allocator, CFUUIDRef uuid);
}
