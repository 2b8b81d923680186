// Starts programs, and waits for their ends.
//
// Thread-safe. A signal handler that collects every child of the process, or SIGCHLD ignored, may take an end away from
// these functions; they then answer that it is not known.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

struct Task {
  std::string program;                 // a path; no PATH is searched, and no shell helps out
  std::vector<std::string> arguments;  // without the program
  std::string folder;                  // the working folder; "": that of this process
  bool silent = false;                 // standard output and error go to the null device
};

// The process's number; nothing when the program cannot be started, and `errno` says why: then no process is left. It
// has this process's environment and its standard descriptors unless it is silent, no other descriptor, and every
// signal at its default and let through. A relative program is looked for from this process's working folder. Who
// starts a task waits for it, or has it waited for, once.
std::optional<pid_t> startTask(const Task& task);

// Blocks until the process ends. Its exit status, or the number of the signal that ended it; -1 when that is not known.
int waitForTask(pid_t process);

// Returns at once; the process is waited for when it ends, so that nothing is left of it. Until then a thread sleeps.
void waitForTaskAside(pid_t process);

}  // namespace platform
