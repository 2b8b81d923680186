// The functions of SystemConfiguration that the program uses, as documented.

#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

using SCDynamicStoreRef = const struct __SCDynamicStore*;

extern "C" {
CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid);
}
