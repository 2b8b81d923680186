// A mutex between processes, identified by a path and a project number.
//
// - A System V semaphore set. Member 0 counts the attached processes; member 1 is 1 while the mutex is free, 0 while it
//   is held.
// - A process that dies is detached and releases the mutex.
// - Two objects with the same key exclude each other, in one process too. An object is not thread-safe.
// - There is no constructor: the owner sets `semid` to -1 and `held` to false.
// - No function waits longer than `platform::WaitLimit` allows.
// - `create` holds the `PathLock` of the path. An owner that calls `finalize` while another process may call `create`
//   holds it too.
// - No function logs or throws.

#pragma once

class OVNBinarySemaphore {
 public:
  // Attaches to the set. Creates the set if there is none. Returns true without effect if already attached.
  // `SemaphoreSet::attach` says which existing sets are refused. An object that could not be counted, for example
  // because no undo entry is free (ENOSPC), is not attached.
  bool create(const char* path, int projectNumber);

  // Detaches, and removes the set if no other object is attached. Does not release a mutex that is held.
  bool finalize();

  // Returns 1 if the mutex is free, 0 if it is held, -1 on error.
  int getCount() const;

  // Takes the mutex. Waits until it is free or the deadline is reached; a signal does not end the wait.
  bool tryWait();

  // Takes the mutex if it is free. Returns false if it is held.
  bool signal();

  // Releases the mutex. Returns true without effect if this object does not hold it. On failure removes the set, so
  // that no other process waits for it.
  bool release();

  int semid;  // -1 if not attached
  bool held;  // whether this object holds the mutex
};
