// The kernel's process table and argument areas, as `sysctl` returns them. The processes are those in /proc.

#pragma once

#include <optional>
#include <string>

namespace doubles {

// How many times a table grows after its size was returned.
inline int tableGrowths = 0;

// Replaces the argument area of every process.
inline std::optional<std::string> argumentArea;

}  // namespace doubles
