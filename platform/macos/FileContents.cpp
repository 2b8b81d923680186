#include "platform/FileContents.h"

namespace platform {

// The system shares blocks only with a file that it makes itself, under a name and with the attributes of the original.
//
// Where a file has holes is not to be asked: asked for data from within data (SEEK_DATA), the system names what follows
// the next hole, or says that there is none, and bytes that are not on the disk yet may count as a hole. The system's
// own copy runs after a file that grows, and fails at what cannot be cut off.
off_t copyData(int /*from*/, int /*to*/, off_t /*size*/) {
  return 0;
}

}  // namespace platform
