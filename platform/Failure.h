// Error texts for log lines.

#pragma once

#include <optional>
#include <string>

namespace platform {

// The error text; nothing on success.
using Failure = std::optional<std::string>;

// The system's text for an `errno` value. On Linux it is in English in every locale, so that the log does not depend on
// the user's. Thread-safe.
std::string errorText(int error);

//   (EACCES, "/x") => "Permission denied: /x"
inline std::string errorWithPath(int error, const std::string& path) {
  return errorText(error) + ": " + path;
}

}  // namespace platform
