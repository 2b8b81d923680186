// The running program: where it lies and what it was built for.

#pragma once

#include <string>
#include <vector>

namespace platform {

enum class Architecture { x86, x86_64, ppc, ppc64, other };

// The folder that holds the running executable, whatever folder it was started from; "" when the system does not tell.
// On macOS an application's is the one whose name ends in ".app".
std::string bundlePath();

// The running executable; "" when the system does not tell. One that has been removed since keeps its path.
std::string executablePath();

// What the running executable's file holds code for, which on macOS may be several; empty when it cannot be read. A
// processor of another family is `other`.
std::vector<Architecture> executableArchitectures();

}  // namespace platform
