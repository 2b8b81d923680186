// What the lock classes have in common. Not to be used by two threads at once.

#pragma once

class OVNLockClass {
 public:
  virtual ~OVNLockClass() = default;

  // Takes the lock if that can be done now.
  virtual bool AcquireLock() = 0;

  // What counts as locked is each class's own.
  virtual bool isLocked() = 0;

  // True, and nothing more, when this object holds nothing.
  virtual bool releaseLock() = 0;

  // 0; there is nothing to open.
  int open() { return 0; }
};
