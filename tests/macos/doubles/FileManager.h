// File references of the File Manager. A reference contains the number of a path. Thread-safe.

#pragma once

#include <CoreServices/CoreServices.h>

#include <string>

namespace doubles {

// Returns the reference to a path. The path need not exist.
FSRef referenceTo(const std::string& path);

// Returns the path of a reference; "" if `referenceTo` did not create it.
std::string pathOf(const FSRef& reference);

}  // namespace doubles
