// Copies what is in open files.

#pragma once

#include <sys/types.h>

namespace platform {

// Copies a file of `size` bytes to an empty one, the holes as holes where they can be told, or into a pipe or a device.
// A size of 0 stands for one that is not told: all there is. False, with `errno`, when a byte cannot be read or
// written.
bool copyContents(int from, int to, off_t size);

// What the system copies by itself, which may be nothing: brings the bytes of a file of `size` bytes to the same places
// in the other file, but for holes, wherever both stand, or lets both files have the same blocks. Answers how far it
// came; behind that place the other file may hold more.
off_t copyData(int from, int to, off_t size);

}  // namespace platform
