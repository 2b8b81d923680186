// Takes the powers of the super-user away from a forked child of a test.

#pragma once

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace support {

// From now on permission bits hold for this process, and owners and mounts are out of its reach, whoever runs it. It
// stays the user it was, so its files, its log and its semaphores stay its own.
inline bool giveUpPowers() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  const __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  return ::syscall(SYS_capset, &header, none) == 0;
}

}  // namespace support
