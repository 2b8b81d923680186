// Removes folders with everything in them.
//
// A path ends at its first NUL. Thread-safe.

#pragma once

#include <string>

#include "platform/Failure.h"

namespace platform {

// Removes what is at `path`, a symbolic link itself, a folder with everything in it.
//
// Goes on after a failure and tells the first one. What another process removes meanwhile is no failure. A folder that
// cannot be removed whatever is in it keeps it: a mount point, or one in a folder that may not be written. So do "/",
// and a path whose last component is "." or "..".
Failure removeTree(const std::string& path);

// Removes a file, a symbolic link itself or a folder that is empty.
Failure removeObject(const std::string& path);

}  // namespace platform
