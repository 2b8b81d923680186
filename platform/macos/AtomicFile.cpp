#include "platform/AtomicFile.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace platform {

// `fsync` leaves the bytes in the cache of the drive. Only some file systems, such as APFS, support F_FULLFSYNC.
int flushToDisk(int file) {
  const int result = ::fcntl(file, F_FULLFSYNC);
  const bool isUnsupported = result == -1 && (errno == ENOTSUP || errno == EINVAL || errno == ENOTTY);
  return isUnsupported ? ::fsync(file) : result;
}

}  // namespace platform
