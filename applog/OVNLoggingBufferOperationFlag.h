// A mutex of this process's own for its log buffers, unless another process's id agrees with it in the low eight bits.

#pragma once

#include "applog/OVNBinarySemaphore.h"

// `createFlag` once, then pairs of start and end, then `finalizeFlag` once.
class OVNLoggingBufferOperationFlag : public OVNBinarySemaphore {
 public:
  // Never takes the key of the file-operation flag. False when the user's home folder, which names the mutex, is not
  // known.
  bool createFlag();
  bool finalizeFlag();

  // Waits as long as needed.
  bool startBufferOperation();
  bool endBufferOperation();
};
