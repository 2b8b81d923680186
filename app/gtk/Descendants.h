// Finds the processes that WebKit has started, of which it tells nothing.
//
// - A process in the sandbox is not a child: its parent is bwrap.
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; otherwise nothing is found.
// - Any thread.

#pragma once

#include <string>
#include <vector>

#include "platform/UniqueFd.h"

// Returns a pidfd of each descendant of this process whose program has this file name.
std::vector<platform::UniqueFd> descendantsRunning(const std::string& program);
