// System information by selector.

#pragma once

#include <CoreServices/MacTypes.h>

enum : OSType {
  gestaltSystemVersionMajor = 'sys1',
  gestaltSystemVersionMinor = 'sys2',
  gestaltSystemVersionBugFix = 'sys3',
};

extern "C" {
OSErr Gestalt(OSType selector, SInt32* response) SDK_DEPRECATED;
}
