// The line that all sides of a comparison write.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <string>

#include "platform/UniqueFd.h"

namespace bench {

constexpr char message[] = "didFinishLoadForFrame main frame finished loading";

// As it stands in the log file, newline included.
inline std::string wholeLine() {
  return std::string("11/21/26 16:05:09:123 | [INFO] |  | QSU | SVO | SVO |  |  | 21762 | ") + message + "\n";
}

inline platform::UniqueFd openForAppending(const std::string& path) {
  return platform::UniqueFd(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
}

inline void writeBare(const platform::UniqueFd& file, const std::string& line) {
  if (::write(file.get(), line.data(), line.size()) == static_cast<ssize_t>(line.size())) return;
  std::perror("bench-logging: write");
  std::exit(1);
}

}  // namespace bench
