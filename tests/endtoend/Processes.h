// The processes below one, and what a process may leave behind in the system.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace endtoend {

// Children, their children, and so on, of a process that still runs.
std::vector<pid_t> descendantsOf(pid_t pid);

// The one of them whose name begins so; a name has at most 15 letters in the process table.
std::optional<pid_t> descendantNamed(pid_t pid, const std::string& name);

// From now on a process whose parent ends becomes a child of this one, and shows in childrenOfThisProcess().
void adoptOrphans();
std::vector<pid_t> childrenOfThisProcess();

// Waits for the end of an adopted process; false when it does not end within five seconds.
bool outlive(pid_t orphan);

// The identifiers of the System V semaphore sets that exist.
std::vector<std::string> semaphoreSets();

}  // namespace endtoend
