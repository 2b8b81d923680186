// What the kernel tells of processes: those that really run here.

#pragma once

#include <optional>
#include <string>

namespace doubles {

// How often a table still grows between the question for its size and its reading. A test decides.
inline int growths = 0;

// What every process shows of its arguments; nothing: what it really shows.
inline std::optional<std::string> argumentArea;

}  // namespace doubles
