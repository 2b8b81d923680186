// Starts programs, waits for their ends, and lists the processes of the machine.
//
// Thread-safe. A signal handler that collects every child of the process, or SIGCHLD ignored, may take an end away from
// these functions; they then answer that it is not known.
//
// On macOS a process is started by a task object of Foundation's, which lives until the process ends and collects its
// end itself, whoever else waits for it: `waitpid` may find it taken (ECHILD). Its signals are as Foundation leaves
// them. Paths and arguments that are not UTF-8 cannot be handed over (EILSEQ).

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

// Blocks until the process has ended; on macOS the calling thread's run loop runs in its default mode meanwhile. The
// process's exit status, or the number of the signal that ended it; -1 when that is not known; nothing when the program
// cannot be started, and `errno` says why: then no process is left. The process has this process's environment and its
// standard descriptors unless it is silent, no other descriptor, and every signal at its default and let through. A
// relative program is looked for from this process's working folder.
std::optional<int> runTask(const Task& task);

// The process's number, while it runs; otherwise the same. Who starts a task waits for it by its number, or has it
// waited for aside.
std::optional<pid_t> startTask(const Task& task);

// Returns at once; the process is waited for when it ends, so that nothing is left of it. On Linux a thread sleeps
// until then; on macOS the task object does it without being asked.
void waitForTaskInBackground(pid_t process);

// The program's path as it has to be told to a new process that is in its working folder already.
//   ("sub/tool" to be run in "sub", from "/tmp") => "/tmp/sub/tool"
std::string resolveProgram(const Task& task);

// All that this process may see, itself included; empty when the system does not tell.
std::vector<pid_t> allProcesses();

// The path of the program that a process runs, never one of its arguments; "" when the process has ended or has no
// program. On Linux the first argument stands in for the path where that may not be seen, except for a super-user who
// has given up that power: to him it is "". On macOS it is "" too for other users' processes unless the super-user
// asks.
std::string programOf(pid_t process);

}  // namespace platform
