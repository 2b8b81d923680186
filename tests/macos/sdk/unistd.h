// POSIX functions with the extension of macOS.

#pragma once

#include_next <unistd.h>

extern "C" {
int pthread_setugid_np(uid_t user, gid_t group);
}
