// Reads whole files of text.

#pragma once

#include <optional>
#include <string>

namespace platform {

struct FileText {
  std::optional<std::string> text;
  std::string error;  // why there is no text; "" when the system does not say
};

// The text of a file that holds nothing but UTF-8, NUL characters included. Follows symbolic links. What is not a
// regular file has no text, and is not waited for.
FileText readUtf8File(const std::string& path);

}  // namespace platform
