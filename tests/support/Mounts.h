// Mounts that no other process sees.

#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <string>

#include "tests/support/Child.h"

namespace support {

// What a body answers with that could not set up what it needs.
constexpr int kImpossible = 77;

// Runs `body` in a process of its own with mounts of its own; its answer is the exit status, or `kImpossible` where a
// process may not have that.
inline int withOwnMounts(const std::function<int()>& body) {
  return Child([&] {
           if (::unshare(CLONE_NEWNS) != 0) return kImpossible;
           if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kImpossible;
           return body();
         })
      .wait();
}

// An empty file system of so many bytes over an existing folder, for a process that has mounts of its own.
inline bool mountMemory(const std::string& folder, std::size_t bytes) {
  return ::mount("memory", folder.c_str(), "tmpfs", 0, ("size=" + std::to_string(bytes)).c_str()) == 0;
}

}  // namespace support
