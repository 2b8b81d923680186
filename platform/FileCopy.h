// Copies the contents of one file over another as cheaply as the file system allows.

#pragma once

#include <string>

namespace platform {

// Copies all bytes of `from` to `to`, which is created or emptied first. False when either cannot be opened or a byte
// cannot be read or written; an unfinished `to` is removed.
bool copyFileContents(const std::string& from, const std::string& to);

}  // namespace platform
