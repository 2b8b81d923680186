// Mounted file systems, with what macOS tells of them as far as the program uses it.

#pragma once

#include_next <sys/mount.h>

struct statfs {
  char f_mntonname[1024];
};

extern "C" {
int statfs(const char* path, struct statfs* system) __asm("macos_statfs");
}
