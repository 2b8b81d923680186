// Interface of the lock classes. An object is not thread-safe.

#pragma once

class OVNLockClass {  // names fixed by the interface
 public:
  virtual ~OVNLockClass() = default;

  // Takes the lock. Does not wait.
  virtual bool AcquireLock() = 0;

  // The meaning depends on the class.
  virtual bool isLocked() = 0;

  // Returns true without effect if this object does not hold the lock.
  virtual bool releaseLock() = 0;

  // Does nothing. Returns 0.
  int open() { return 0; }
};
