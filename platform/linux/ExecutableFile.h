// What a program's file says of itself.

#pragma once

#include <string>
#include <vector>

#include "platform/Bundle.h"

namespace platform {

// What the file holds code for: empty unless it is an executable of this kind of system (ELF). A program with the
// instructions of a 64-bit processor and pointers of 32 bits (x32) counts as `other`.
std::vector<Architecture> architecturesOf(const std::string& file);

}  // namespace platform
