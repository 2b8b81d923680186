// The processes of the machine. Thread-safe.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace platform {

// All that this process may see, itself included; empty when the system does not tell.
std::vector<pid_t> allProcesses();

// The path of the program that a process runs, never one of its arguments; "" when the process has ended or has no
// program. On Linux the first argument stands in for the path where that may not be seen, except for a super-user who
// has given up that power: to him it is "". On macOS it is "" too for other users' processes unless the super-user
// asks.
std::string programOf(pid_t process);

}  // namespace platform
