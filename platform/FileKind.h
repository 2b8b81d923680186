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

}  // namespace platform
