// Processes that see no others.

#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <functional>
#include <string>

#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Mounts.h"

namespace support {

// Runs `body` in a process that sees no other processes than its own descendants; its answer is the exit status, or
// `kImpossible` where a process may not have that. What it leaves running is killed.
inline int withOwnProcesses(const std::function<int()>& body) {
  return Child([&] {
           const bool asRoot = ::geteuid() == 0;
           const std::string user = std::to_string(::geteuid()) + " " + std::to_string(::geteuid()) + " 1";
           if (::unshare(CLONE_NEWPID | CLONE_NEWNS | (asRoot ? 0 : CLONE_NEWUSER)) != 0) return kImpossible;
           if (!asRoot) writeFile("/proc/self/uid_map", user);
           return Child([&] {
                    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kImpossible;
                    if (::mount("proc", "/proc", "proc", 0, nullptr) != 0) return kImpossible;
                    return body();
                  })
               .wait();
         })
      .wait();
}

}  // namespace support
