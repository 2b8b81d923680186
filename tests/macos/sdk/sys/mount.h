// `statfs` of macOS with the members that the program uses.

#pragma once

#include_next <sys/mount.h>

struct statfs {
  char f_mntonname[1024];
};

extern "C" {
int statfs(const char* path, struct statfs* system) __asm("macos_statfs");
}
