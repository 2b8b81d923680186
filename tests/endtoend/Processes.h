// The processes below one, and what a process may leave behind in the system.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace endtoend {

// The child of a process, or its child's child and so on, whose name begins so. A name has at most 15 letters in the
// process table.
std::optional<pid_t> descendantNamed(pid_t pid, const std::string& name);

// From now on a process whose parent ends becomes a child of this one, and shows in childrenOfThisProcess().
void adoptOrphans();
std::vector<pid_t> childrenOfThisProcess();

// Waits for the end of an adopted process; false when it does not end within thirty seconds.
bool outlive(pid_t orphan);

// The identifiers of the System V semaphore sets that exist of those that the log of this home has; others may be those
// of programs that run at the same time.
std::vector<int> semaphoreSets();

}  // namespace endtoend
