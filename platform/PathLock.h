// Locks a path with `flock` for a scope, so that processes use the resource that the path identifies
// one at a time.
//
// - Advisory: only users of `PathLock` exclude each other.
// - Waits at most 200 ms. After that, or if the path cannot be opened, the scope runs without the lock.
// - The system releases the lock of a process that dies.
// - Used around opening and closing a semaphore set: creating a set and assigning its first values are two calls, and
//   so are detaching from a set and removing it.

#pragma once

#include <string>

#include "platform/UniqueFd.h"

namespace platform {

class PathLock {
 public:
  explicit PathLock(const std::string& path);

  // Returns whether the scope holds the lock.
  explicit operator bool() const { return held_; }

 private:
  UniqueFd file_;
  bool held_ = false;
};

}  // namespace platform
