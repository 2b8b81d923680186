// Copies what is in open files.

#pragma once

#include <sys/types.h>

namespace platform {

// Copies a file of `size` bytes to an empty one, the holes as holes where they can be told, or into a pipe or a device.
// A size of 0 stands for one that is not told: all there is. False, with `errno`, when a byte cannot be read or
// written.
bool copyContents(int from, int to, off_t size);

// What a system does in its own way. Both may do nothing.

// Lets the other file have all blocks of this one, and says whether it has.
bool shareBlocks(int from, int to);

// Copies the bytes of a file of `size` bytes to the same places in the other file, but for holes, wherever both stand;
// answers how far it came.
off_t copyData(int from, int to, off_t size);

}  // namespace platform
