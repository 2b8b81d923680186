// Process namespaces.

#pragma once

#include <sched.h>
#include <sys/mount.h>

#include <functional>

#include "tests/support/Child.h"
#include "tests/support/Mounts.h"

namespace support {

// Runs `body` in a child process with its own process namespace: it sees only its descendants, which are killed when it
// ends. Returns its exit status, or `kImpossible` without the permission to create one.
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
