// Drops the capabilities of a child process.

#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace support {

// Drops all capabilities of this process: permission bits apply to it, and it can change neither owners nor mounts. Its
// user does not change, so it keeps access to its files, its log and its semaphores.
inline bool dropCapabilities() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  return ::syscall(SYS_capset, &header, none) == 0;
}

}  // namespace support
