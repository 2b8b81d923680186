// A lock with a number of slots, on the whole machine or among one user's processes.
//
// Attached for the object's lifetime: the last object to go removes the set. A process that dies gives its slots back.
// An object that could not attach answers false, and 0.

#pragma once

#include <cstdint>
#include <string>

#include "applog/OVNLockClass.h"

enum LockType : int {
  SystemLock = 0,  // and every value but `UserLock`
  UserLock = 1,
};

class OVNSemaphoreLock : public OVNLockClass {
 public:
  // A set that exists keeps its number of slots, whatever `count` says. Only the low eight bits of `id` tell locks
  // apart.
  OVNSemaphoreLock(int id, int count, LockType type);
  OVNSemaphoreLock(const OVNSemaphoreLock&) = delete;
  OVNSemaphoreLock& operator=(const OVNSemaphoreLock&) = delete;

  // Gives no slot back: the system does that when the process ends, unless the set is gone by then.
  ~OVNSemaphoreLock() override;

  // Takes one more slot at every call.
  bool AcquireLock() override;

  // Whether anybody has taken a slot.
  bool isLocked() override;

  // Gives back one slot, and only ever one: an object that took several answers true afterwards and keeps the others.
  bool releaseLock() override;

  // The number of free slots.
  int getCurrentLockCount() const;

 private:
  int semid = -1;
  [[maybe_unused]] int id;  // name and place fixed by the binary interface
  bool locked = false;
  int maxCount;
  [[maybe_unused]] std::int64_t initialCount;  // name and place fixed by the binary interface
  std::string keyPath;
};
