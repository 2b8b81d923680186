// A lock on the whole machine, named by a number, that one process holds at a time.
//
// A process that dies gives it back. The semaphore set is never removed.

#pragma once

#include "applog/OVNLockClass.h"

class OVNSystemLevelDeploymentLock : public OVNLockClass {
 public:
  // Only the low eight bits of `id` tell locks apart.
  explicit OVNSystemLevelDeploymentLock(int id) : id(id) {}
  OVNSystemLevelDeploymentLock(const OVNSystemLevelDeploymentLock&) = delete;
  OVNSystemLevelDeploymentLock& operator=(const OVNSystemLevelDeploymentLock&) = delete;
  ~OVNSystemLevelDeploymentLock() override;

  // True, and nothing more, when this object holds the lock already.
  bool AcquireLock() override;

  // Whether somebody else holds it, found out by taking it: a holder that asks its own lock gets false and has given
  // it up.
  bool isLocked() override;
  bool releaseLock() override;

  // Whether anybody holds it; takes nothing.
  bool isLocked2() const;

  // Waits as long as anybody holds it, without taking it. True at once when there is no such lock.
  bool waitUntilReleased();

 private:
  int semid = -1;
  int id;
  bool locked = false;
};
