// A lock between the processes that write the same log file, held for each line, size check and rotation.
//
// - A System V semaphore set. Member 0 counts the open locks; member 1 is 1 while the lock is free, 0 while it is held.
// - A process that dies releases the lock. It stays counted, except a forked one.
// - Also excludes the threads of one process. Release once per take.
// - The last lock to close removes the set. A set that was removed from outside is created again by the next wait.
// - A forked process that inherits an open lock counts itself with its first wait, until its end at the latest. Before
//   that wait, `finalize` only closes the lock.
// - `create` holds the `PathLock` of the path. An owner that calls `finalize` while another process may call `create`
//   holds it too.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

#include <atomic>
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
  // already open. `SemaphoreSet::attach` says which existing sets are refused.
  //
  // If the count is at its limit, because many processes died without closing the lock, the lock opens uncounted.
  bool create(const std::string& path, int projectId);

  // Takes the lock. Waits up to the deadline of `platform::WaitLimit`; a signal does not end the wait.
  bool wait();

  // Takes the lock if it is free. Returns false if it is held or on error.
  bool signal();

  // Releases the lock. On failure removes the set, so that no other process waits for it.
  bool release();

  // Closes the lock, and removes the set if no other lock is open on it. Does not release a lock that is held. The lock
  // is closed afterward, even if the result is false.
  bool finalize();

  // Returns the number of locks open on the set, -1 if this lock is closed.
  int getReferenceCount() const;

 private:
  static constexpr int kClosed = -1;
  static constexpr pid_t kNobody = 0;

  // How the lock was counted: the flags of the operation, with which it must be reversed.
  static constexpr int kUncounted = 0;
  static constexpr int kCounted = IPC_NOWAIT;
  static constexpr int kCountedAfterFork = SEM_UNDO | IPC_NOWAIT;

  struct Attachment {
    int id = kClosed;
    int count = kUncounted;
  };

  bool attach(Attachment& made) const;
  static bool detach(const Attachment& attachment);
  void countForked(pid_t process);
  bool reopen(int removed);
  void waitForOtherThread(pid_t process);

  std::string path_;
  int projectId_ = 0;
  std::atomic<int> id_{kClosed};
  std::atomic<int> count_{kUncounted};
  std::atomic<int> taken_{kClosed};  // the set that `wait` took; another thread may have replaced it since
  std::atomic<pid_t> countedProcess_{kNobody};
  std::atomic<pid_t> holdingProcess_{kNobody};  // this process while one of its threads holds the lock
};

}  // namespace tarn
