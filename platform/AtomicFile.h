// Replaces the contents of a file at one blow.

#pragma once

#include <string>
#include <string_view>

namespace platform {

// Makes a file of these bytes: written to a file of a random name beside it, brought to the disk, and renamed over what
// was there, so that whoever opens `path` finds the old bytes or the new ones, whole. False, with the old file as it
// was and none beside it, when any of that fails; only a process that is killed meanwhile leaves the file of the random
// name.
//
// A new file has the mode 0666 less the umask. One that is replaced hands on its permissions, and its owner and group
// where the process may set them. A symbolic link or a pipe is replaced itself; a folder cannot be. The folder must
// exist.
bool writeFileAtomically(const std::string& path, std::string_view bytes);

}  // namespace platform
