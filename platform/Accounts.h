// The groups of the person who logged in. Thread-safe.

#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>
#include <vector>

namespace platform {

// The effective group, then the others that the login name is a member of, `most` at most. Empty when the process does
// not belong to a login: on Linux services, containers and scheduled programs.
std::vector<gid_t> groupsOfLogin(std::size_t most);

// "" for a group that has no name.
std::string nameOfGroup(gid_t group);

}  // namespace platform
