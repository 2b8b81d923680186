// Texts for status codes.

#pragma once

#include <CoreServices/MacTypes.h>

extern "C" {
const char* GetMacOSStatusErrorString(OSStatus err);
const char* GetMacOSStatusCommentString(OSStatus err);
}
