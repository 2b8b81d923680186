// C++ file streams of open files.
//
// - The standard library opens a stream's file without close-on-exec: another thread may start a program that inherits
//   it. These streams use a descriptor that is never inherited instead.

#pragma once

#include <fstream>

namespace platform {

// Opens a closed stream for appending to the file of a close-on-exec descriptor, which the caller keeps. Returns false
// if there is no free descriptor.
bool openForAppending(std::fstream& stream, int file);

}  // namespace platform
