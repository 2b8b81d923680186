// Gives a copied file what its original has besides its contents.

#pragma once

#include <sys/stat.h>

#include <array>
#include <ctime>
#include <string>

namespace platform {

// Owner and group, extended attributes, permission bits and times, those of `object` and of the open file `from`.
// 0, or the `errno` value when bits or times could not be set.
int copyAttributes(int from, const struct stat& object, int to);

// Owner, group and times of a symbolic link, as far as they can be set.
void copyLinkAttributes(const struct stat& object, const std::string& to);

// What a system does in its own way.

// What the other file system does not take, or this user may not set, is left out.
void copyExtendedAttributes(int from, int to);

// Comes last, for it may forbid its owner to set the rest. On Linux the list is an extended attribute.
void copyAccessList(int from, int to);

// When it was last read and last written, to the nanosecond.
std::array<timespec, 2> timesOf(const struct stat& object);

}  // namespace platform
