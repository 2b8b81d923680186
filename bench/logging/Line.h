// The line that every logger under comparison writes.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/UniqueFd.h"

namespace bench {

constexpr char kMessage[] = "didFinishLoadForFrame main frame finished loading";

// Returns the line as the log file contains it, with its newline.
inline std::string wholeLine() {
  return std::string("11/21/26 16:05:09:123 | [INFO] |  | QSU | SVO | SVO |  |  | 21762 | ") + kMessage + "\n";
}

inline platform::UniqueFd openForAppending(const std::string& path) {
  return platform::UniqueFd(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
}

inline void writePlain(const platform::UniqueFd& file, const std::string& line) {
  if (::write(file.get(), line.data(), line.size()) == static_cast<ssize_t>(line.size())) return;
  std::perror("bench-logging: write");
  std::exit(1);
}

}  // namespace bench
