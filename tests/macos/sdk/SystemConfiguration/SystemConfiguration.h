// The system's settings as their documentation describes them, as far as the program uses them.

#pragma once

#include <CoreFoundation/CoreFoundation.h>
#include <sys/types.h>

using SCDynamicStoreRef = const struct __SCDynamicStore*;

extern "C" {
CFStringRef SCDynamicStoreCopyConsoleUser(SCDynamicStoreRef store, uid_t* uid, gid_t* gid);
}
