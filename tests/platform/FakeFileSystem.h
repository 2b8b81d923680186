// Stands in for what the kernel says of file systems that a test cannot mount; a test that links FakeFileSystem.cpp
// decides that.

#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace platform_test {

// The type of every file system; nothing: what the kernel says.
inline std::optional<unsigned> fakeType;

// The attributes of every folder; nothing: what the kernel says.
inline std::optional<int> fakeFlags;

// The label of every file system that is asked for it; nothing: what the kernel says.
inline std::optional<std::string> fakeLabel;

// Lets the second file have the blocks of the first; nothing: what the kernel does.
inline std::function<void(int from, int to)> fakeSharing;

// What the next questions for a file system fail with, one each, the last one first.
inline std::vector<int> errors;

// How many files were asked for the attributes of a folder.
inline int filesAsked = 0;

}  // namespace platform_test
