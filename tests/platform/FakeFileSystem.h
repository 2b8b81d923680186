// Replaces `statfs` and `ioctl` of the C library, so that a test chooses the properties of file systems. Link
// FakeFileSystem.cpp. An empty value means the kernel's result.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform_test {

// The type of every file system.
inline std::optional<unsigned> fakeType;

// The flags of every folder.
inline std::optional<int> fakeFlags;

// The label of every file system.
inline std::optional<std::string> fakeLabel;

// Implements FICLONE: makes `to` share the blocks of `from`.
inline std::function<void(int from, int to)> fakeSharing;

// Each call of `statfs` removes the last error and fails with it.
inline std::vector<int> errors;

// Counts the queries for flags on descriptors that are not folders.
inline int flagQueriesOfFiles = 0;

}  // namespace platform_test
