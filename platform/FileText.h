// Reads text files.

#pragma once

#include <optional>
#include <string>

namespace platform {

struct FileText {
  std::optional<std::string> text;
  std::string error;  // if there is no text: the system's error text, or "" if it has none
};

// Reads a UTF-8 file, which may contain NUL characters.
//
// - Symbolic links are followed.
// - A file that is not a regular file is an error; a pipe is not waited for.
FileText readUtf8File(const std::string& path);

}  // namespace platform
