// Launch Services: starts applications.

#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <CoreServices/AppleEvents.h>
#include <CoreServices/Files.h>
#include <CoreServices/MacTypes.h>

using LSLaunchFlags = UInt32;
enum : LSLaunchFlags {
  kLSLaunchDefaults = 0x00000001,
  kLSLaunchAsync = 0x00010000,
  kLSLaunchNewInstance = 0x00080000,
};

#pragma pack(push, 2)

struct SDK_DEPRECATED LSApplicationParameters {
  CFIndex version;
  LSLaunchFlags flags;
  const FSRef* application;
  void* asyncLaunchRefCon;
  CFDictionaryRef environment;
  CFArrayRef argv;
  AppleEvent* initialEvent;
};

#pragma pack(pop)

extern "C" {
OSStatus LSOpenApplication(const LSApplicationParameters* appParams, ProcessSerialNumber* outPSN) SDK_DEPRECATED;
}
