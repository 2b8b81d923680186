// `sysctl` with the names and structures that the program uses.

#pragma once

#include <sys/types.h>

#include <cstddef>

#define CTL_KERN 1
#define KERN_PROC 14
#define KERN_PROC_ALL 0
#define KERN_PROCARGS 38

struct extern_proc {
  pid_t p_pid;
};

struct kinfo_proc {
  struct extern_proc kp_proc;
};

extern "C" {
int sysctl(int* name, u_int namelen, void* oldp, std::size_t* oldlenp, void* newp,
           std::size_t newlen) __asm("macos_sysctl");
}
