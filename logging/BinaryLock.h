// A lock between the processes that write the same log file, held for each line, size check and rotation.
//
// - A System V semaphore set. Member 0 counts the open locks; member 1 is 1 while the lock is free, 0 while it is held.
// - A process that dies releases the lock, but stays counted.
// - Also excludes the threads of one process. The holder is not recorded: release once per take.
// - The last lock to close removes the set.
// - `create` holds the `PathLock` of the path. An owner that calls `finalize` while another process may call `create`
//   holds it too.

#pragma once

#include <string>

namespace tarn {

class BinaryLock {
 public:
  BinaryLock() = default;
  BinaryLock(const BinaryLock&) = delete;
  BinaryLock& operator=(const BinaryLock&) = delete;

  // Calls `finalize`, except if the set's identifier is 0, as in zeroed memory.
  ~BinaryLock();

  // Opens the lock of an existing file. Creates the set if there is none. Returns true without effect if the lock is
  // already open.
  bool create(const std::string& path, int projectId);

  // Takes the lock. Waits without limit; a signal does not end the wait.
  bool wait();

  // Takes the lock if it is free. Returns false if it is held or on error.
  bool signal();

  // Releases the lock.
  bool release();

  // Closes the lock, and removes the set if no other lock is open on it. Does not release a lock that is held. The lock
  // is closed afterward, even if the result is false.
  bool finalize();

  // Returns the number of locks open on the set, -1 if this lock is closed.
  int getReferenceCount() const;

 private:
  static constexpr int kClosed = -1;

  int id_ = kClosed;
};

}  // namespace tarn
