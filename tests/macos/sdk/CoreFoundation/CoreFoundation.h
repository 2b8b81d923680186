// Core Foundation's objects, as far as the program uses them. Its strings and arrays are Foundation's under another
// name.

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
