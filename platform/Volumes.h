// Mount points, volume names, and case sensitivity of mounted file systems.
//
// - Follows symbolic links.
// - Thread-safe.

#pragma once

#include <optional>
#include <string>

namespace platform {

// Returns the mount point of the file system that contains an existing path. A bind mount has a mount point of its own.
// On failure returns no value and sets `errno` as `statfs` does.
//   "/proc/self/status" => "/proc"   "/etc" => "/"
std::optional<std::string> mountPointOf(const std::string& path);

// Returns the name of a volume in UTF-8; no value if there is no folder at the path.
//
// - Linux: the label or, without a UTF-8 label, the last component of the mount point ("/" for the root).
// - macOS: the name from the File Manager, such as "Macintosh HD".
std::optional<std::string> volumeNameOf(const std::string& mountPoint);

// Returns whether "a" and "A" are different names at an existing path; no value if the path does not exist.
//
// - Linux: a property of the file system type, or of each folder on file systems that support case folding (ext4, f2fs,
//   tmpfs). A file has the rule of its folder.
// - macOS: a property of the volume; no value if the File Manager does not know the volume.
std::optional<bool> isCaseSensitive(const std::string& path);

}  // namespace platform
