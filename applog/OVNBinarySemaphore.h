// A mutex among processes: a semaphore set named by a path and a number.
//
// Member 0 counts the processes attached, and a process that dies is taken off; member 1 is 1 while the mutex is free.
// The last one to leave removes the set. There is no constructor: the owner sets `semid` to -1 and `held` to false.
// Not to be used by two threads at once; two objects on one key, in one process or two, exclude each other. Nothing
// logs or throws: false, or -1, is the only report.
//
// Creating takes turns with others on the same path (platform/PathLock.h), since two that both find no set would both
// add to the mutex; an owner that finalizes holds the same turn.

#pragma once

class OVNBinarySemaphore {
 public:
  // Attaches to the set, making it when it is the first. True, and nothing more, when that has been done already.
  bool create(const char* path, int projectNumber);

  // Detaches, and removes the set when nobody else is attached. Does not give back a mutex that is held.
  bool finalize();

  // 1 while the mutex is free, 0 while it is taken, -1 on error.
  int getCount() const;

  // Takes the mutex, waiting as long as needed; signals do not end the wait.
  bool tryWait();

  // Takes the mutex only if it is free now.
  bool signal();

  // Gives the mutex back; true, and nothing more, when this object does not hold it.
  bool release();

  int semid;  // -1 while no set is created
  bool held;
};
