// Copies files as cheaply as the file system allows.

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <ctime>
#include <string>

#include "platform/Failure.h"

namespace platform {

// Copies the bytes of `from` to `to`, which is created or emptied first: as many as `from` had then, without those that
// come meanwhile; a file of /proc, which tells no size, is read to its end. False when either cannot be opened or a
// byte cannot be read or written. An unfinished copy is then removed if this call created it at `to`, and emptied if a
// file or a link was there before; links, pipes and devices stay. False too when both are one file, by hard links or
// symbolic ones perhaps, which is then left as it was.
bool copyFileContents(const std::string& from, const std::string& to);

// Copies a file with its attributes to a path at which nothing is yet.
//
// A symbolic link is copied as a link with the same text. Kept are the permission bits, the times to the nanosecond,
// extended attributes with the access list, and the holes; owner and group as far as this process may give files
// away, and without the owner no set-user-id bit either. On macOS holes are filled with zeros, and flags are not
// kept: the copy of a locked file can be replaced. A file that grows meanwhile is copied as far as it went.
// Pipes, sockets, devices and folders are refused without being opened. On failure nothing is left at `to`, and what
// had been there still is. The file is not flushed to the disk.
Failure copyFile(const std::string& from, const std::string& to);

// What a system does in its own way.

// What the other file system does not take, or this user may not set, is left out.
void copyExtendedAttributes(int from, int to);

// Comes last, for it may forbid its owner to set the rest. On Linux the list is an extended attribute.
void copyAccessList(int from, int to);

// When it was last read and last written, to the nanosecond.
std::array<timespec, 2> timesOf(const struct stat& object);

// What the system copies by itself, which may be nothing: brings the bytes of a file of `size` bytes to the same places
// in the other file, but for holes, wherever both stand, or lets both files have the same blocks. Answers how far it
// came; behind that place the other file may hold more.
off_t copyData(int from, int to, off_t size);

}  // namespace platform
