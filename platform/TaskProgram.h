// Where a task's program is.

#pragma once

#include <string>

#include "platform/Processes.h"

namespace platform {

// The program's path as it has to be told to a new process that is in its working folder already.
//   ("sub/tool" to be run in "sub", from "/tmp") => "/tmp/sub/tool"
std::string programFromItsFolder(const Task& task);

}  // namespace platform
