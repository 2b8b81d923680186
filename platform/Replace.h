// Replaces one file-system object by another one.
//
// A path ends at its first NUL. Thread-safe.

#pragma once

#include <string>

namespace platform {

// Renames `from` to `to` and removes the object that was at `to`, a folder with its contents.
//
// The object at `to` is first renamed to "." and a UUID in its folder. If `from` cannot be renamed to `to`, it is
// renamed back, so that a failure loses nothing. Returns 0 or an `errno` value:
//
//   EEXIST              the object at `to` cannot be renamed or not be removed; what remains of it is at `to`
//   ENOENT, ENOTDIR, …  an object or a folder cannot be read, or a path ends in "/" and `from` is not a folder
//   EBUSY               `from` ends in "." or ".."
//   ELOOP               `from` is a symbolic link to the object at `to` or into it, or would refer to itself at `to`
//   EINVAL              the object at `to` is a folder that contains `from` or a link on the path `from`, or `to` is in
//                       the folder `from`
//   EXDEV, EACCES, …    the error of `rename`
int replace(const std::string& from, const std::string& to);

}  // namespace platform
