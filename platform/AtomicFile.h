// Atomically replaces the contents of a file.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// Writes `bytes` to a temporary file in the same folder, flushes it to the disk and renames it to `path`.
//
// - A reader of `path` gets either the previous contents or all of `bytes`.
// - On failure returns false, keeps the previous file and removes the temporary file. Only a process that is killed
//   leaves the temporary file, whose name is "." and a UUID.
// - A new file has the mode 0666 less the umask.
// - A replaced file keeps its permissions, and its owner and group if the process may set them.
// - A symbolic link or a pipe is replaced itself. A folder is a failure.
// - The folder must exist.
bool writeFileAtomically(const std::string& path, std::string_view bytes);

// Implemented per system: writes what was written to an open file to the disk itself. Returns what `fsync` returns.
int flushToDisk(int file);

}  // namespace platform
