// A mutex of this process for its log buffers.
//
// - The project number is the process id, or the next number whose key is neither the file operation flag's nor
//   reserved.
// - Processes whose numbers have the same low eight bits share the mutex.
// - Calling order: `createFlag` once, then pairs of start and end, then `finalizeFlag` once.

#pragma once

#include "applog/OVNLoggingOperationFlag.h"

class OVNLoggingBufferOperationFlag : public OVNLoggingOperationFlag {
 public:
  // Returns false if the user's home folder, which is the key path, is unknown.
  bool createFlag();

  // Takes the mutex. Waits until the deadline of `platform::WaitLimit`.
  bool startBufferOperation();
  bool endBufferOperation();
};
