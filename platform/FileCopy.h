// Copies files, without copying holes and, where the file system supports it, by sharing blocks.

#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <array>
#include <ctime>
#include <string>

#include "platform/Failure.h"

namespace platform {

// Copies the contents of `from` to `to`, which is created or truncated first.
//
// - Copies the size that `from` has at the start; bytes appended during the copy are omitted. A file that reports no
//   size, for example in /proc, is read to its end.
// - Returns false if a file cannot be opened, read or written. A file that this call created is then removed; a regular
//   file that existed before is empty; links, pipes and devices are kept.
// - Returns false without a change if both paths are the same file.
bool copyFileContents(const std::string& from, const std::string& to);

// Copies the contents of an open file to an open empty file, with the same rules. A partial copy remains after a
// failure.
bool copyFileContents(int from, int to);

// Copies a file with its attributes. Nothing may exist at `to`.
//
// - Keeps the permission bits, the times in nanoseconds, extended attributes, the access list, and holes.
// - Keeps owner and group if the process may set them; without the owner, the set-user-id and set-group-id bits are
//   cleared.
// - macOS: holes are filled with zeros and file flags are not kept, so that the copy of a locked file can be replaced.
// - A symbolic link is copied as a link with the same target.
// - Bytes appended during the copy are omitted.
// - Pipes, sockets, devices and folders are refused without being opened.
// - On failure no copy remains, and an object that existed at `to` is unchanged.
// - The copy is not flushed to the disk.
Failure copyFile(const std::string& from, const std::string& to);

// The functions below are implemented per system.

// Omits attributes that the other file system does not support or this user may not set.
void copyExtendedAttributes(int from, int to);

// Must be called last, because the list may deny its owner further changes. On Linux the list is an extended attribute.
void copyAccessList(int from, int to);

// The access and modification times.
std::array<timespec, 2> timesOf(const struct stat& object);

// Copies data within the kernel to the same offsets, omitting holes, or shares the blocks. Returns the offset up to
// which everything is copied, which may be 0. `to` may contain more data after that offset.
off_t copyData(int from, int to, off_t size);

}  // namespace platform
