// System information by selector.

#pragma once

#include <CoreServices/MacTypes.h>

enum : OSType {
  gestaltSystemVersionMajor SDK_DEPRECATED = 'sys1',
  gestaltSystemVersionMinor SDK_DEPRECATED = 'sys2',
  gestaltSystemVersionBugFix SDK_DEPRECATED = 'sys3',
};

extern "C" {
OSErr Gestalt(OSType selector, SInt32* response) SDK_DEPRECATED;
}
