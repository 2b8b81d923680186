// What the numbers of the system's C interfaces mean.

#pragma once

#include <CoreServices/MacTypes.h>

extern "C" {
const char* GetMacOSStatusErrorString(OSStatus err) SDK_DEPRECATED;
const char* GetMacOSStatusCommentString(OSStatus err) SDK_DEPRECATED;
}
