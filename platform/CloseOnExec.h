// Keeps open descriptors from the programs that this process starts.
//
// - The standard descriptors 0 to 2 are never changed.
// - Needs the folder /dev/fd; without it nothing happens.

#pragma once

namespace platform {

// For the descriptors that the process was started with.
void closeAllOnExec();

}  // namespace platform
