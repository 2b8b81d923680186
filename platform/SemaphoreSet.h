// A System V semaphore set.
//
// - A value type that holds the set's identifier: copying and destroying it do not change the set.
// - A failed call returns false or -1 and sets `errno`. ENOSPC: no undo entry is free for an operation with SEM_UNDO;
//   macOS allows a process 10.
// - Thread-safe. Excludes threads of one process too. The C++ memory model does not know semaphore sets: an owner that
//   shares data between threads orders its accesses by another means.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

#include <functional>
#include <string>

#include "platform/WaitLimit.h"

namespace platform {

class SemaphoreSet {
 public:
  static constexpr int kNoMutex = -1;

  // What `attach` does with the set that it finds or creates.
  struct AttachSteps {
    int members;                                           // of a new set
    std::function<bool(const SemaphoreSet&)> initialize;   // assigns the first values of a new set
    std::function<bool(const SemaphoreSet&)> countCaller;  // adds the caller to the count of users; null: no count
    int minMembers = 0;                                    // passed to `find`
    int permissions = 0;                                   // passed to `find`
    int mutex = kNoMutex;                                  // of a user's own lock: the member that is 1 while free
  };

  explicit SemaphoreSet(int id) : id_(id) {}

  // Returns the key that `ftok` makes, or -1 if nothing exists at the path. Only the low eight bits of the project
  // number enter the key.
  static key_t keyFor(const std::string& path, int projectNumber);

  // Returns the identifier of an existing set, or -1 if there is none or it has fewer than `minMembers` members.
  static int find(key_t key, int minMembers = 0, int permissions = 0);

  // Returns the identifier of the set of `key`. Creates it with permissions 0666 if it does not exist; all members of a
  // new set are 0.
  static int create(key_t key, int members);

  // Finds or creates the set of `key` and counts the caller in, while it holds the `PathLock` of `path`.
  //
  // - Retries twice if the last user removes the set between the find and the count.
  // - With a `mutex`: fails with EPERM, and an `id` of -1, if the set belongs to a user other than root, the effective
  //   user and the console user, or has too few members. Raises the mutex if the set's creator ended before it assigned
  //   the first value.
  // - `id` receives the identifier of the last set found or created, or -1. It is set on failure too.
  static bool attach(const std::string& path, key_t key, const AttachSteps& steps, int& id);

  // Adds `delta` to a member in one `semop` with the given flags (SEM_UNDO, IPC_NOWAIT). A signal does not end the
  // wait.
  bool change(int member, int delta, int flags) const;

  // Subtracts 1 from a member with SEM_UNDO. Fails with EAGAIN at the deadline of `WaitLimit`; a signal does not end
  // the wait.
  //
  // After such a failure every wait of the process fails within a few milliseconds, until a member of the same set is
  // taken: a program that writes many lines must not wait for each.
  bool take(int member) const;

  // Adds 1 to a member with SEM_UNDO, after `take`. On failure removes the set, so that the processes that wait for it
  // can create another, and prints that to the standard error, once per process. If it cannot be removed either, the
  // next `take` of this process that would have to wait for it releases it first.
  bool release(int member) const;

  // Subtracts 1 from a count of users with SEM_UNDO. If it is 0, waits for an increase as `take` does.
  bool detach(int member) const;

  // Returns -1 on failure.
  int value(int member) const;
  bool setValue(int member, int value) const;
  bool remove() const;

  // Returns whether `error` means that a set which was found has been removed since.
  static bool wasRemoved(int error);

 private:
  bool wait(int member, bool isStuck) const;
  bool takeBefore(WaitLimit::Clock::time_point deadline, int member) const;
  void giveUp(int member) const;
  bool isUntouched(int mutex) const;
  void raiseIfAbandoned(int mutex) const;
  bool isUsable(int members) const;
  static bool findOrCreate(key_t key, const AttachSteps& steps, bool isAlone, int& id);

  int id_;
};

}  // namespace platform
