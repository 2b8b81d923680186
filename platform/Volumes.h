// The mounted file systems: which one a path lies on, what it is called, and how it tells names apart.
//
// Symbolic links are followed. Thread-safe.

#pragma once

#include <optional>
#include <string>

namespace platform {

// Where the file system of an existing path is mounted; a bind mount or a folder mounted over another is a mount of its
// own. Nothing on failure, and `errno` says why: as `statfs` does for the path.
//   "/proc/self/status" => "/proc"   "/etc" => "/"
std::optional<std::string> mountPointOf(const std::string& path);

// The name that a user knows the volume by, in UTF-8. On Linux: its label or, without one that is UTF-8, the last
// component of the mount point, "/" for the root. On macOS the File Manager's, perhaps "Macintosh HD". Nothing when
// there is no such folder.
std::optional<std::string> volumeNameOf(const std::string& mountPoint);

// Whether "a" and "A" are two names where the path lies; nothing when the path does not exist. On Linux file systems
// that know only one rule have that rule, and elsewhere the folder decides (that of a file is the one that holds it):
// ext4, f2fs and tmpfs may fold case folder by folder. On macOS a volume has one rule, and nothing is told of one that
// the File Manager does not know.
std::optional<bool> isCaseSensitive(const std::string& path);

}  // namespace platform
