// Reads and changes semaphore sets with plain System V calls, independent of the classes under test.

#pragma once

#include <sys/ipc.h>
#include <sys/sem.h>
#include <sys/types.h>

#include <string>
#include <utility>

namespace support {

inline int setOf(const std::string& path, int projectNumber) {
  return ::semget(::ftok(path.c_str(), projectNumber), 0, 0);
}

inline int valueOf(int id, int member) {
  return ::semctl(id, member, GETVAL);
}

// The set must exist.
inline semid_ds statusOf(int id) {
  semid_ds status{};
  union {
    semid_ds* status;
  } argument{&status};
  ::semctl(id, 0, IPC_STAT, argument);
  return status;
}

inline unsigned modeOfSet(int id) {
  return statusOf(id).sem_perm.mode & 0777u;
}

inline unsigned membersOf(int id) {
  return static_cast<unsigned>(statusOf(id).sem_nsems);
}

inline void setValueOf(int id, int member, int value) {
  union {
    int value;
  } argument{value};
  ::semctl(id, member, SETVAL, argument);
}

// Changes the owner, but not the creator.
inline bool giveSetTo(int id, uid_t user) {
  semid_ds status = statusOf(id);
  status.sem_perm.uid = user;
  union {
    semid_ds* status;
  } argument{&status};
  return ::semctl(id, 0, IPC_SET, argument) == 0;
}

// Returns the number of processes that wait for the member to increase.
inline int waitersOn(int id, int member) {
  return ::semctl(id, member, GETNCNT);
}

// Removes a set at the end of the scope. For sets that their users never remove, or whose users were killed.
class SetRemover {
 public:
  SetRemover(std::string path, int projectNumber) : path_(std::move(path)), number_(projectNumber) {}
  SetRemover(const SetRemover&) = delete;
  SetRemover& operator=(const SetRemover&) = delete;
  ~SetRemover() {
    const int id = setOf(path_, number_);
    if (id != -1) ::semctl(id, 0, IPC_RMID);
  }

 private:
  std::string path_;
  int number_;
};

}  // namespace support
