// Base of the two logging flags: a mutex between processes whose key path is the user's home folder.

#pragma once

#include <string>

#include "applog/OVNBinarySemaphore.h"

class OVNLoggingOperationFlag : public OVNBinarySemaphore {
 public:
  // Calls `finalize` while it holds the `PathLock` of the key path.
  bool finalizeFlag();

 protected:
  // Project numbers that other programs use too.
  static constexpr int kFileOperationNumber = 2147483547;
  static constexpr int kReservedNumber = 57445459;

  // Returns the home folder of the console user, "" if it is unknown.
  static std::string keyPath();
};
