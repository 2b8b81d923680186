// The user-wide mutex under which every line of the user's log files is written.

#pragma once

#include "applog/OVNBinarySemaphore.h"

// `createFlag` once, then pairs of start and end, then `finalizeFlag` once.
class OVNLoggingFileOperationFlag : public OVNBinarySemaphore {
 public:
  // False when the user's home folder, which names the mutex, is not known.
  bool createFlag();
  bool finalizeFlag();

  // Waits as long as needed.
  bool startFileOperation();
  bool endFileOperation();
};
