// The system's file copy.

#pragma once

#include <sys/stat.h>

#include <optional>

namespace doubles {

// The target when this thread last copied an access list to it.
inline thread_local std::optional<struct stat> accessListTarget;

}  // namespace doubles
