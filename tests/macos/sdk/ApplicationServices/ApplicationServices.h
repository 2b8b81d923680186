// The functions of the Process Manager that the program uses, as documented.

#pragma once

#include <CoreServices/CoreServices.h>
#include <sys/types.h>

enum { kNoProcess = 0, kSystemProcess = 1, kCurrentProcess = 2 };

extern "C" {
OSStatus GetProcessForPID(pid_t pid, ProcessSerialNumber* psn) SDK_DEPRECATED;
OSErr SetFrontProcess(const ProcessSerialNumber* pPSN) SDK_DEPRECATED;
}
