#include "platform/FileContents.h"

#include <sys/stat.h>
#include <unistd.h>

namespace platform {

// The system shares blocks only with a file that it makes itself, under a name and with the attributes of the original.
bool shareBlocks(int /*from*/, int /*to*/) {
  return false;
}

// The system's own copy is one of blocks too; it runs after a file that grows, and fails at what cannot be cut off.
off_t copyPart(int from, int to, off_t at, off_t end) {
  struct stat copy {};
  if (::fstat(to, &copy) != 0 || !S_ISREG(copy.st_mode)) return at;  // a device stands where it likes
  if (::lseek(from, at, SEEK_SET) < 0 || ::lseek(to, at, SEEK_SET) < 0) return at;
  (void)copyBlocks(from, to, end - at);  // an error that lasts shows when the rest is copied
  const off_t reached = ::lseek(to, 0, SEEK_CUR);
  return reached < at ? at : reached;
}

}  // namespace platform
