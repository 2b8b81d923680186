// What is to be found at a path.
//
// The file system is asked anew with each call; an answer may be old when it arrives. A path ends at its first NUL.
// Thread-safe.

#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>

namespace platform {

enum class FileKind { none, folder, other };

// Whether the system's answers speak of one object.
bool isSame(const struct stat& object, const struct stat& other);

// What a final symbolic link leads to counts: a dangling one is nothing, one to a folder a folder.
FileKind kindOf(const std::string& path);

// Whether anything is there, a symbolic link itself included. On false `errno` says why it could not be seen.
bool isSomethingAt(const std::string& path);

// Whether both paths name the same entry of the same folder, be it there or not.
//   ("/tmp/a", "/tmp//./a/") => true   (two hard links of a file) => false
bool isSameEntry(const std::string& path, const std::string& other);

// Whether removing what is at `path` also removes what is at `other`: both paths name the same folder, or the same
// entry under two spellings. Hard links of a file are separate entries, but two in one folder that cannot be read count
// as one. Final symbolic links are not followed.
//   ("/tmp/a", "/tmp//./a") => true   ("/tmp/a", "/tmp/A") => true where the folder is not case-sensitive
bool isRemovedWith(const std::string& path, const std::string& other);

// The text of the symbolic link at `path`; nothing, with `errno`, when it cannot be read.
std::optional<std::string> textOfLink(const std::string& path);

// Whether a symbolic link is at `path` that leads to the very object at `other`, or that would lead back to itself,
// through other links perhaps, if it stood at `other`.
//   x/f -> ../y/f -> ../real: ("x/f", "y/f") => true
bool isLinkTo(const std::string& path, const std::string& other);

}  // namespace platform
