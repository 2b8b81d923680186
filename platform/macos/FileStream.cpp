#include "platform/FileStream.h"

#include <fstream>
#include <ios>
#include <string>

namespace platform {

// Opening a path in /dev/fd duplicates the descriptor together with close-on-exec.
bool openForAppending(std::fstream& stream, int file) {
  stream.open("/dev/fd/" + std::to_string(file), std::ios::out | std::ios::app);
  return stream.is_open();
}

}  // namespace platform
