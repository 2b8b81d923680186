// Lets processes take turns at something that belongs to a path, for the length of a scope.
//
// A semaphore set cannot be created and given its first values in one step, nor be left and removed in one step; this
// lock puts a newcomer and the last leaver one behind the other. It is a courtesy among processes that use it: when the
// path cannot be opened or somebody keeps the turn for longer than a fifth of a second, the scope is entered all the
// same, so nobody ever hangs here. A process that dies gives its turn back.

#pragma once

#include <string>

#include "platform/UniqueFd.h"

namespace platform {

class PathLock {
 public:
  explicit PathLock(const std::string& path);

 private:
  UniqueFd turn_;
};

}  // namespace platform
