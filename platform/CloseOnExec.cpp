#include "platform/CloseOnExec.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace platform {
namespace {

template <typename Condition>
void closeOnExecIf(const Condition& condition) {
  std::error_code failed;
  std::filesystem::directory_iterator entry("/dev/fd", failed);
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    const int fd = std::atoi(entry->path().filename().c_str());
    if (fd > STDERR_FILENO && condition(fd)) (void)::fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
}

}  // namespace

void closeAllOnExec() {
  closeOnExecIf([](int) { return true; });
}

void closeFileOnExec(const std::string& path) {
  struct stat file {};
  if (::stat(path.c_str(), &file) != 0) return;
  closeOnExecIf([&file](int fd) {
    struct stat each {};
    return ::fstat(fd, &each) == 0 && each.st_dev == file.st_dev && each.st_ino == file.st_ino;
  });
}

}  // namespace platform
