// Finds the processes that WebKit has started, of which it tells nothing.
//
// - A process in the sandbox is not a child: its parent is bwrap.
// - Needs Linux 5.3 (pidfd_open) and the children files of /proc; otherwise nothing is found.
// - Any thread.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

#include "platform/UniqueFd.h"

inline constexpr char kPageProgram[] = "WebKitWebProcess";
inline constexpr char kNetworkProgram[] = "WebKitNetworkProcess";

struct Descendant {
  std::string program;  // file name
  pid_t id = 0;
  platform::UniqueFd handle;  // a pidfd
};

// Returns the descendants of this process that run one of the two programs.
std::vector<Descendant> webKitProcesses();
