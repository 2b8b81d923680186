#include "tests/platform/FakeFileSystem.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdint>

using namespace platform_test;

// Both replace the functions of the C library.
extern "C" int statfs(const char* path, struct statfs* system) noexcept {
  if (!errors.empty()) {
    errno = errors.back();
    errors.pop_back();
    return -1;
  }
  const auto result = static_cast<int>(::syscall(SYS_statfs, path, system));
  if (result == 0 && fakeType) system->f_type = static_cast<decltype(system->f_type)>(*fakeType);
  return result;
}

extern "C" int ioctl(int fd, unsigned long request, ...) noexcept {
  va_list arguments;
  va_start(arguments, request);
  void* const argument = va_arg(arguments, void*);
  va_end(arguments);
  if (request == FS_IOC_GETFSLABEL && fakeLabel) {
    *std::copy(fakeLabel->begin(), fakeLabel->end(), static_cast<char*>(argument)) = '\0';
    return 0;
  }
  if (request == FICLONE && fakeSharing) {
    fakeSharing(static_cast<int>(reinterpret_cast<std::intptr_t>(argument)), fd);
    return 0;
  }
  if (request != FS_IOC_GETFLAGS || !fakeFlags) return static_cast<int>(::syscall(SYS_ioctl, fd, request, argument));
  struct stat item {};
  if (::fstat(fd, &item) != 0 || !S_ISDIR(item.st_mode)) ++flagQueriesOfFiles;
  *static_cast<int*>(argument) = *fakeFlags;
  return 0;
}
