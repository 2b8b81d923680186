// A System V semaphore set.
//
// - A value type that holds the set's identifier: copying and destroying it do not change the set.
// - A failed call returns false or -1 and sets `errno`.
// - Thread-safe. What a thread writes before it increments a semaphore is visible to the thread that decrements it
//   next.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

#include <functional>
#include <string>

namespace platform {

class SemaphoreSet {
 public:
  // What `attach` does with the set that it finds or creates.
  struct AttachSteps {
    int members;                                           // of a new set
    std::function<bool(const SemaphoreSet&)> initialize;   // assigns the first values of a new set
    std::function<bool(const SemaphoreSet&)> countCaller;  // adds the caller to the count of users; null: no count
    int minMembers = 0;                                    // passed to `find`
    int permissions = 0;                                   // passed to `find`
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
  // - `id` receives the identifier of the last set found or created, or -1. It is set on failure too.
  static bool attach(const std::string& path, key_t key, const AttachSteps& steps, int& id);

  // Adds `delta` to a member in one `semop` with the given flags (SEM_UNDO, IPC_NOWAIT). A signal does not end the
  // wait.
  bool change(int member, int delta, int flags) const;

  // Subtracts 1 from a member with SEM_UNDO. Waits without limit.
  bool take(int member) const;

  // Returns -1 on failure.
  int value(int member) const;
  bool setValue(int member, int value) const;
  bool remove() const;

  // Returns whether `error` means that a set which was found has been removed since.
  static bool wasRemoved(int error);

 private:
  int id_;
};

}  // namespace platform
