// Starts programs, waits for them, and lists the processes of the machine.
//
// - Thread-safe.
// - An exit status is unknown if a signal handler waits for all children of the process, or if SIGCHLD is ignored.
// - macOS: a task object of Foundation starts the process, lives until it ends and waits for it, so that `waitpid` may
//   fail with ECHILD. Foundation decides on its signals. Paths and arguments that are not UTF-8 fail with EILSEQ.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace platform {

struct Task {
  std::string program;                 // a path; PATH is not searched, and no shell is used
  std::vector<std::string> arguments;  // without the program
  std::string folder;                  // the working folder; "": the one of this process
  bool silent = false;                 // sends standard output and standard error to the null device
};

// Starts a program and waits until it ends.
//
// - Returns the exit status, or the number of the signal that ended the process; -1 if it is unknown.
// - If the program cannot be started, returns no value, sets `errno` and leaves no process.
// - The process inherits the environment, standard input and, unless it is silent, standard output and error. It
//   inherits no other descriptor. No signal is blocked or ignored.
// - A relative program path is resolved in the working folder of this process, not in `folder`.
// - macOS: runs the calling thread's run loop in its default mode meanwhile.
std::optional<int> runTask(const Task& task);

// Starts a program in the same way and returns its process number. The caller waits for that process or calls
// `waitForTaskInBackground`.
std::optional<pid_t> startTask(const Task& task);

// Returns immediately; the process is waited for when it ends. Linux: on a detached thread. macOS: by the task object.
void waitForTaskInBackground(pid_t process);

// Makes a relative program path absolute if the task has a working folder.
//   ("sub/tool" to be run in "sub", from "/tmp") => "/tmp/sub/tool"
std::string resolveProgram(const Task& task);

// Returns all processes that are visible to this one, itself included; empty if the system does not list them.
std::vector<pid_t> allProcesses();

// Returns the path of the program that a process runs; "" if the process has ended or has no program.
//
// - Linux: if the link to the executable is not readable, the first argument. For root without that capability "",
//   because a process chooses its arguments itself.
// - macOS: "" for processes of other users unless the caller is root.
std::string programOf(pid_t process);

}  // namespace platform
