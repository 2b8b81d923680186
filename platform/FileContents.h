// Copies what is in open files.

#pragma once

#include <sys/types.h>

namespace platform {

// Copies a file of `size` bytes to an empty one, the holes as holes where both know them, or into a pipe or a device. A
// size of 0 stands for one that is not told: all there is. False, with `errno`, when a byte cannot be read or written.
bool copyContents(int from, int to, off_t size);

// Copies from where both files stand, at most so many bytes. False, with `errno`, when it stopped at an error.
bool copyBlocks(int from, int to, off_t most);

// What a system does in its own way. Both may do nothing.

// Lets the other file have all blocks of this one, and says whether it has.
bool shareBlocks(int from, int to);

// Copies the bytes from `at` up to `end` to the same place in the other file, wherever both stand; answers how far it
// came.
off_t copyPart(int from, int to, off_t at, off_t end);

}  // namespace platform
