// Deep folders, descriptor limits, and a process that exchanges two paths.

#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <string>

#include "platform/UniqueFd.h"
#include "tests/support/Child.h"

namespace support {

// Creates the folder `top` and below it `depth` nested folders "d".
inline bool makeDeepFolder(const std::string& top, int depth) {
  if (::mkdir(top.c_str(), 0700) != 0) return false;
  platform::UniqueFd folder(::open(top.c_str(), O_RDONLY | O_DIRECTORY));
  for (int i = 0; i < depth; ++i) {
    if (::mkdirat(folder.get(), "d", 0700) != 0) return false;
    folder = platform::UniqueFd(::openat(folder.get(), "d", O_RDONLY | O_DIRECTORY));
  }
  return static_cast<bool>(folder);
}

// Limits this process to `more` additional descriptors.
inline void limitDescriptors(unsigned more) {
  const platform::UniqueFd next(::open("/dev/null", O_RDONLY));
  const auto limit = static_cast<rlim_t>(next.get()) + more;
  const rlimit limits{limit, limit};
  ::setrlimit(RLIMIT_NOFILE, &limits);
}

// A process that repeatedly exchanges the objects at two paths until the end of the scope.
class Swapper {
 public:
  Swapper(const std::string& one, const std::string& other)
      : child_([one, other] {
          for (;;)
            ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE);
          return 0;
        }) {}

 private:
  Child child_;
};

}  // namespace support
