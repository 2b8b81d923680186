#include "platform/AtomicFile.h"

#include <unistd.h>

namespace platform {

int flushToDisk(int file) {
  return ::fsync(file);
}

}  // namespace platform
