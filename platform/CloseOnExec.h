// Keeps open descriptors from the programs that this process starts.
//
// - The standard descriptors 0 to 2 are never changed.
// - Needs the folder /dev/fd; without it nothing happens.

#pragma once

#include <string>

namespace platform {

// For the descriptors that the process was started with.
void closeAllOnExec();

// For the descriptors of one file. A C++ stream opens its file without close-on-exec and does not return its
// descriptor.
void closeFileOnExec(const std::string& path);

}  // namespace platform
