// The descendants of a process, and what a process may leave behind in the system.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <vector>

namespace endtoend {

// Returns the descendant of a process whose name begins with `name`. The process table has at most 15 characters of a
// name.
std::optional<pid_t> descendantNamed(pid_t pid, const std::string& name);

// The peak memory of a process, in megabytes. Empty if it has ended.
std::optional<long> peakMegabytesOf(pid_t pid);

// From now on descendants whose parent ends become children of this process.
void adoptOrphans();
std::vector<pid_t> childrenOfThisProcess();

// Waits for the end of an adopted process. Returns false after thirty seconds.
bool waitForExit(pid_t process);

// Returns the existing System V semaphore sets of this home's log. Sets of other programs are ignored.
std::vector<int> semaphoreSets();

// Removes these sets. For processes that end without releasing them.
void removeSemaphoreSets();

}  // namespace endtoend
