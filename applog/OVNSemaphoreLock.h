// A counting lock between the processes of the machine or of one user.
//
// - An object is attached to the semaphore set from its construction to its destruction. The last object removes the
//   set.
// - The system returns the slots of a process that dies.
// - If an object could not attach, every operation returns false or 0.

#pragma once

#include <cstdint>
#include <string>

#include "applog/OVNLockClass.h"

enum LockType : int {  // names fixed by the interface
  SystemLock = 0,      // key path "/tmp"; every value other than `UserLock` means this
  UserLock = 1,        // key path is the user's home folder
};

class OVNSemaphoreLock : public OVNLockClass {
 public:
  // `count` is the number of slots of a new set; an existing set keeps its number. Only the low eight bits of `id`
  // enter the key.
  OVNSemaphoreLock(int id, int count, LockType type);
  OVNSemaphoreLock(const OVNSemaphoreLock&) = delete;
  OVNSemaphoreLock& operator=(const OVNSemaphoreLock&) = delete;

  // Does not release a slot: the system does at the end of the process, if the set still exists.
  ~OVNSemaphoreLock() override;

  // Takes one slot at every call.
  bool AcquireLock() override;

  // Returns whether any process holds a slot.
  bool isLocked() override;

  // Releases one slot. An object that holds more cannot release the others: later calls return true without effect.
  bool releaseLock() override;

  // Returns the number of free slots.
  int getCurrentLockCount() const;

 private:
  // Names and order fixed by the interface.
  int semid = -1;
  [[maybe_unused]] int id;
  bool locked = false;
  int maxCount;
  [[maybe_unused]] std::int64_t initialCount;

  std::string keyPath_;
};
