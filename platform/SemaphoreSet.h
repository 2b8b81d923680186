// A System V semaphore set, as thin as the calls beneath it; the lock classes bring the rules.
//
// A `SemaphoreSet` is only a name for a set: copying it copies nothing, and destroying it leaves the set alone. Every
// call answers false or -1 on failure and leaves the reason in `errno`. Thread-safe; what a thread wrote before it
// raised a semaphore is seen by the thread that lowered it next.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

#include <string>

namespace platform {

class SemaphoreSet {
 public:
  explicit SemaphoreSet(int id) : id_(id) {}

  // The key that `ftok` makes; -1 when nothing exists at the path. Only the low eight bits of the number count.
  static key_t keyFor(const std::string& path, int projectNumber);

  // The identifier of an existing set; -1 when there is none, or one with fewer members than asked for.
  static int find(key_t key, int members = 0, int permissions = 0);

  // The identifier of the set, created with permissions 0666 when it does not exist yet. All members of a new set are
  // 0.
  static int create(key_t key, int members);

  // One operation: adds `by` to a member with the flags of `semop` (SEM_UNDO, IPC_NOWAIT). A wait goes on after a
  // signal.
  bool change(int member, int by, int flags) const;

  // Takes 1 from a member with SEM_UNDO, waiting as long as needed.
  bool take(int member) const;

  // -1 on failure.
  int value(int member) const;
  bool setValue(int member, int value) const;
  bool remove() const;

  // Whether `error` says that the set was removed, by its last user, after it had been found.
  static bool wasRemoved(int error);

 private:
  int id_;
};

}  // namespace platform
