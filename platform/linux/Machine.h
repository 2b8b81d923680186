// What Linux needs besides platform/Machine.h: ELF files, and threads that nobody waits for.

#pragma once

#include <functional>
#include <string>
#include <vector>

#include "platform/Machine.h"

namespace platform {

// What the file holds code for: empty unless it is an executable of this kind of system (ELF). A program with the
// instructions of a 64-bit processor and pointers of 32 bits (x32) counts as `other`.
std::vector<Architecture> architecturesOf(const std::string& file);

// Does the work on a thread of its own, which no signal of the program's interrupts; false when there can be no thread.
bool runDetached(const std::function<void()>& work);

}  // namespace platform
