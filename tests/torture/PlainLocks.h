// The two locks of the log, written with nothing but the plain order of their semaphore operations.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>

#include <cerrno>

#include "tests/support/Home.h"
#include "tests/torture/Scene.h"

namespace torture {

// Attached until the process ends.
class PlainLock {
 public:
  enum class Kind { kFlag, kFile };

  // Creates the set if there is none. The log must exist for `kFile`.
  explicit PlainLock(Kind kind) : PlainLock(kind, keyOf(kind)) {}
  PlainLock(Kind kind, key_t key) : set_(::semget(key, 0, 0)) {
    if (set_ == -1) {
      set_ = ::semget(key, 2, IPC_CREAT | 0666);
      (void)change(1, +1, IPC_NOWAIT);
    }
    (void)change(0, +1, kind == Kind::kFlag ? SEM_UNDO : IPC_NOWAIT);
  }

  // Leaves the set as a process does that is killed right after it has created it.
  static void createWithoutValue(Kind kind) { (void)::semget(keyOf(kind), 2, IPC_CREAT | 0666); }

  bool take() const { return change(1, -1, SEM_UNDO); }
  bool give() const { return change(1, +1, SEM_UNDO); }
  int id() const { return set_; }

  static key_t keyOf(Kind kind) {
    return kind == Kind::kFlag ? ::ftok(support::ownHome().c_str(), 2147483547) : ::ftok(logPath().c_str(), 11);
  }

 private:
  bool change(unsigned short member, short delta, short flags) const {
    sembuf operation{member, delta, flags};
    while (::semop(set_, &operation, 1) != 0) {
      if (errno != EINTR) return false;
    }
    return true;
  }

  int set_;
};

}  // namespace torture
