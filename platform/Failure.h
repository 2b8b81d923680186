// Error texts for log lines.

#pragma once

#include <optional>
#include <string>
#include <system_error>

namespace platform {

// The error text; nothing on success.
using Failure = std::optional<std::string>;

// The system's text for an `errno` value, as returned by `strerror`. Thread-safe.
inline std::string errorText(int error) {
  return std::generic_category().message(error);
}

//   (EACCES, "/x") => "Permission denied: /x"
inline std::string errorWithPath(int error, const std::string& path) {
  return errorText(error) + ": " + path;
}

}  // namespace platform
