// What is to be found at a path.
//
// The file system is asked anew with each call; an answer may be old when it arrives. Thread-safe.

#pragma once

#include <string>

namespace platform {

enum class FileKind { none, folder, other };

// What a final symbolic link leads to counts: a dangling one is nothing, one to a folder a folder.
FileKind kindOf(const std::string& path);

// Whether anything is there, a symbolic link itself included. On false `errno` says why it could not be seen.
bool isSomethingAt(const std::string& path);

// Whether both paths name the same entry of the same folder, be it there or not.
//   ("/tmp/a", "/tmp//./a/") => true   (two hard links of a file) => false
bool isSameEntry(const std::string& path, const std::string& other);

// Whether a symbolic link is at `path` that leads to the very object at `other`.
bool isLinkTo(const std::string& path, const std::string& other);

}  // namespace platform
