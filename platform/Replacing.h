// Looks whether one object can take the place of another, before the other is given up for it.
//
// The file system is asked anew with each call; an answer may be old when it arrives. A path ends at its first NUL.
// Thread-safe.

#pragma once

#include <string>

namespace platform {

// What keeps `from` from being renamed to `to` once what is at `to` has been removed, as an `errno` value; 0 when
// nothing is known that does.
//
//   ENOENT, ENOTDIR, …  `from` or one of the folders cannot be seen, or a slash at the end asks for a folder
//   EBUSY               `from` ends in "." or ".."
//   EXDEV               the two lie on different file systems
//   ELOOP               `from` is a symbolic link that leads to what is at `to`, or would lead to itself there
//   EINVAL              what is at `to` holds `from`, is a link on the way to it, or lies in it
//   EACCES, EPERM       this user may change the folder of `to`, but may not take `from` out of its own
int obstacleToReplacing(const std::string& from, const std::string& to);

}  // namespace platform
