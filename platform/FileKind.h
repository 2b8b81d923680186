// Tests what exists at a path.
//
// - Every call asks the file system. The result may be outdated when it is used.
// - A path ends at its first NUL.
// - Thread-safe.

#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace platform {

enum class FileKind { kNone, kFolder, kOther };

// Whether both describe the same object: same device and inode.
bool isSame(const struct stat& object, const struct stat& other);

// Follows a final symbolic link: `kNone` for a dangling link, `kFolder` for a link to a folder.
FileKind kindOf(const std::string& path);

// Whether anything exists at `path`. Does not follow a final symbolic link. If false, `errno` contains the reason.
bool exists(const std::string& path);

// Whether both paths are the same name in the same folder. The entry need not exist.
//   ("/tmp/a", "/tmp//./a/") => true   (two hard links of a file) => false
bool isSameEntry(const std::string& path, const std::string& other);

// Whether removing the object at `path` also removes the object at `other`: both paths are the same folder, or the same
// entry under two spellings.
//
// - Hard links of a file are separate entries. Two of them in one folder that cannot be read count as one entry.
// - Final symbolic links are not followed.
//
//   ("/tmp/a", "/tmp//./a") => true   ("/tmp/a", "/tmp/A") => true where the folder is not case-sensitive
bool isRemovedWith(const std::string& path, const std::string& other);

// The target text of the symbolic link at `path`. Nothing, with `errno` set, if it cannot be read.
std::optional<std::string> linkTarget(const std::string& path);

// Whether `path` is a symbolic link that refers to the object at `other`, or that would refer to itself, also through
// other links, if it were at `other`.
//   x/f -> ../y/f -> ../real: ("x/f", "y/f") => true
bool isLinkTo(const std::string& path, const std::string& other);

}  // namespace platform
