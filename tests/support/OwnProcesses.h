// Processes that see no others.

#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <functional>

#include "tests/support/Child.h"
#include "tests/support/Mounts.h"

namespace support {

// Runs `body` in a process that sees no other processes than its own descendants; its answer is the exit status, or
// `kImpossible` where a process may not have that. What it leaves running is killed.
inline int withOwnProcesses(const std::function<int()>& body) {
  return Child([&] {
           if (!unshareNamespaces(CLONE_NEWPID | CLONE_NEWNS)) return kImpossible;
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
