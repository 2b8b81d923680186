// Removes files and folders.
//
// A path ends at its first NUL. Thread-safe.

#pragma once

#include <string>

#include "platform/Failure.h"

namespace platform {

// Removes the object at `path`: a file, a symbolic link itself, or a folder with its contents.
//
// - Continues after a failure and returns the first one.
// - An entry that another process has removed is not a failure.
// - A folder keeps its contents if it could not be removed even when empty: a mount point, or a folder in a read-only
//   folder.
// - "/" and a path that ends in "." or ".." are refused.
Failure removeTree(const std::string& path);

// Removes a file, a symbolic link itself, or an empty folder.
Failure removeObject(const std::string& path);

}  // namespace platform
