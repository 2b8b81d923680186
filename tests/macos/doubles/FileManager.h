// References to files as the File Manager hands them out: each stands for a path that really exists here.
// Thread-safe.

#pragma once

#include <CoreServices/CoreServices.h>

#include <string>

namespace doubles {

// What `FSPathMakeRef` gives for this path, which need not exist.
FSRef referenceTo(const std::string& path);

// What the reference was made for; "" when it was not made here.
std::string pathOf(const FSRef& reference);

}  // namespace doubles
