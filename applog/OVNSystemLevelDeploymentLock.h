// A lock of the whole machine, identified by a number, that one process holds at a time.
//
// - A System V semaphore set with one member, which is 1 while the lock is free, 0 while it is held. Nothing removes
//   the set.
// - A process that dies releases the lock.

#pragma once

#include "applog/OVNLockClass.h"

class OVNSystemLevelDeploymentLock : public OVNLockClass {
 public:
  // Only the low eight bits of `id` enter the key.
  explicit OVNSystemLevelDeploymentLock(int id) : id(id) {}
  OVNSystemLevelDeploymentLock(const OVNSystemLevelDeploymentLock&) = delete;
  OVNSystemLevelDeploymentLock& operator=(const OVNSystemLevelDeploymentLock&) = delete;
  ~OVNSystemLevelDeploymentLock() override;

  // Returns true without effect if this object already holds the lock.
  bool AcquireLock() override;

  // Returns whether another object holds the lock. Takes and releases the lock to find out: if this object holds it,
  // the result is false and the lock is free afterward.
  bool isLocked() override;
  bool releaseLock() override;

  // Returns whether any object holds the lock, without taking it.
  bool isLocked2() const;

  // Waits until no object holds the lock, without a limit: a deployment may take any time, and the caller must not
  // start before its end. Does not keep the lock. Returns true immediately if no set exists.
  bool waitUntilReleased();

 private:
  // Names fixed by the interface.
  int semid = -1;
  int id;
  bool locked = false;
};
