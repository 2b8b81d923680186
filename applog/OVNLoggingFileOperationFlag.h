// The mutex of the user's processes that every write of a log line holds.
//
// Calling order: `createFlag` once, then pairs of start and end, then `finalizeFlag` once.

#pragma once

#include "applog/OVNLoggingOperationFlag.h"

class OVNLoggingFileOperationFlag : public OVNLoggingOperationFlag {
 public:
  // Returns false if the user's home folder, which is the key path, is unknown.
  bool createFlag();

  // Takes the mutex. Waits until the deadline of `platform::WaitLimit`. If the set was removed from outside, creates it
  // again.
  bool startFileOperation();
  bool endFileOperation();

 private:
  bool createAgain();
};
