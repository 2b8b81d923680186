// Captures the output of this process and of the programs that it starts.

#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <functional>
#include <string>

#include "platform/UniqueFd.h"
#include "tests/support/Files.h"

namespace support {

// Returns what is written to standard output and standard error while `body` runs.
inline std::string outputOf(const std::function<void()>& body) {
  const TemporaryFolder folder;
  const std::string path = folder / "output";
  std::fflush(nullptr);
  const platform::UniqueFd file(::open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  const platform::UniqueFd output(::dup(STDOUT_FILENO)), errors(::dup(STDERR_FILENO));
  ::dup2(file.get(), STDOUT_FILENO);
  ::dup2(file.get(), STDERR_FILENO);
  body();
  ::dup2(output.get(), STDOUT_FILENO);
  ::dup2(errors.get(), STDERR_FILENO);
  return contentsOf(path);
}

}  // namespace support
