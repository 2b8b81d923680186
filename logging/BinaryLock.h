// Shared by all processes that write the same log file, so that lines never mix and one process at a time cuts it.
//
// A semaphore set named by a path: member 0 counts the locks that are open, member 1 is 1 while the lock is free. A
// process that dies frees the lock it held but stays counted. Threads of a process are put in order too, without being
// told apart: whoever takes the lock releases it once. The last lock to close removes the set.
//
// Opening takes turns with other openers of the same path (platform/PathLock.h), since two that both find no set would
// both declare the lock free, and a set that its last user is leaving vanishes under a newcomer. An owner that closes a
// lock while others may be opening it holds the same turn.

#pragma once

#include <string>

namespace tarn {

class BinaryLock {
 public:
  BinaryLock() = default;
  BinaryLock(const BinaryLock&) = delete;
  BinaryLock& operator=(const BinaryLock&) = delete;

  // Finalizes, unless the identifier is 0: that is what a lock in zeroed memory holds.
  ~BinaryLock();

  // Opens the lock of `path`, which must exist, making the set when it is the first. True, and nothing more, when the
  // lock is open already.
  bool create(const std::string& path, int projectId);

  // Takes the lock, waiting as long as needed; signals do not end the wait.
  bool wait();

  // Takes the lock only if it is free now; false when it is busy and on error.
  bool signal();

  // Frees the lock.
  bool release();

  // Closes the lock, and removes the set when nobody else has it open. It is closed afterwards even when the answer is
  // false. A lock still held stays taken.
  bool finalize();

  // How many locks are open on the set; -1 when this one is not.
  int getReferenceCount() const;

 private:
  static constexpr int closed = -1;

  int identifier = closed;
};

}  // namespace tarn
