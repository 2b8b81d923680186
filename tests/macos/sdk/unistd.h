// POSIX functions with the extension of macOS.

#pragma once

#include <Deprecated.h>

#include_next <unistd.h>

extern "C" {
SDK_DEPRECATED int pthread_setugid_np(uid_t user, gid_t group);
}
