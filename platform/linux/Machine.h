// ELF files and detached threads, for platform/linux.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Machine.h"

namespace platform {

// Returns the architecture of an ELF file; empty if the file is not an executable. A program for x32 (64-bit
// instructions, 32-bit pointers) is `kOther`.
std::vector<Architecture> architecturesOf(const std::string& file);

// Runs `work` on a detached thread with all signals blocked. Returns false if no thread can be started.
bool runDetached(const std::function<void()>& work);

}  // namespace platform
