// Mounts that no other process sees.

#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstddef>
#include <functional>
#include <string>

#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace support {

// What a body answers with that could not set up what it needs.
constexpr int kImpossible = 77;

// Moves this process to namespaces of its own of these kinds (CLONE_NEW...). Whoever may not do that gets a user
// namespace too, with the same user and group; false where that is not allowed either.
inline bool unshareNamespaces(int kinds) {
  const std::string user = std::to_string(::geteuid());
  const std::string group = std::to_string(::getegid());
  if (::unshare(kinds) == 0) return true;
  if (::unshare(kinds | CLONE_NEWUSER) != 0) return false;
  writeFile("/proc/self/setgroups", "deny");
  writeFile("/proc/self/uid_map", user + " " + user + " 1");
  writeFile("/proc/self/gid_map", group + " " + group + " 1");
  return true;
}

// Runs `body` in a process of its own with mounts of its own; its answer is the exit status, or `kImpossible` where a
// process may not have that.
inline int withOwnMounts(const std::function<int()>& body) {
  return Child([&] {
           if (!unshareNamespaces(CLONE_NEWNS)) return kImpossible;
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
