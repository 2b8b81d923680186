#include "platform/CloseOnExec.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>

namespace platform {

void closeAllOnExec() {
  std::error_code failed;
  std::filesystem::directory_iterator entry("/dev/fd", failed);
  for (; !failed && entry != std::filesystem::directory_iterator(); entry.increment(failed)) {
    const int fd = std::atoi(entry->path().filename().c_str());
    if (fd > STDERR_FILENO) (void)::fcntl(fd, F_SETFD, FD_CLOEXEC);
  }
}

}  // namespace platform
