// Folder trees for tests, and conditions under which they are walked and removed.

#pragma once

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>
#include <system_error>

#include "platform/UniqueFd.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace support {

inline void require(bool condition, const std::string& path) {
  if (!condition) throw std::system_error(errno, std::generic_category(), path);
}

inline void makeFolder(const std::string& path) {
  require(::mkdir(path.c_str(), 0700) == 0, path);
}

inline void makeLink(const std::string& target, const std::string& path) {
  require(::symlink(target.c_str(), path.c_str()) == 0, path);
}

// A folder with every kind of entry and unusual names.
inline void makeSmallTree(const std::string& top) {
  for (const char* folder : {"", "/a", "/a/empty", "/.hidden"})
    makeFolder(top + folder);
  for (const char* file : {"/a/file", "/.hidden/line\nbreak", "/\xff\xfe"})
    writeFile(top + file, "");
  makeLink("a", top + "/to a");
  makeLink("nowhere", top + "/dangling");
  makeLink("loop", top + "/loop");
  makeLink("..", top + "/a/up");
  require(::mkfifo((top + "/pipe").c_str(), 0600) == 0, top);
}

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
