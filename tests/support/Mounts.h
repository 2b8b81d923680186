// Mount namespaces and temporary file systems.

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

// The result of a body that lacks a permission; the test is skipped then.
constexpr int kImpossible = 77;

// Moves this process to new namespaces of the given kinds (CLONE_NEW...). Without the permission it also creates a user
// namespace with the same user and group. Returns false if that is not permitted either.
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

// Runs `body` in a child process with its own mount namespace. Returns its exit status, or `kImpossible` without the
// permission to create one.
inline int withOwnMounts(const std::function<int()>& body) {
  return Child([&] {
           if (!unshareNamespaces(CLONE_NEWNS)) return kImpossible;
           if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return kImpossible;
           return body();
         })
      .wait();
}

// Mounts an empty file system of `bytes` bytes on an existing folder. Requires `withOwnMounts`.
inline bool mountMemory(const std::string& folder, std::size_t bytes) {
  return ::mount("memory", folder.c_str(), "tmpfs", 0, ("size=" + std::to_string(bytes)).c_str()) == 0;
}

}  // namespace support
