// Where the program lies.

#pragma once

#include <string>

namespace platform {

// The folder that holds the running executable, whatever folder it was started from; "" when the system does not tell.
std::string bundlePath();

}  // namespace platform
