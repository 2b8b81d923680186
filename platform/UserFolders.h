// Who sits at the machine, and where the home folder of the process's user is.
//
// Neither answer comes from the environment, which a launcher may have set for somebody else.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace platform {

// The user whose session is on the screen of the first seat; nothing when nobody is logged in there.
std::optional<uid_t> consoleUser();

// The home folder of the effective user, as the password database has it; "" when it has none.
std::string homeFolder();

}  // namespace platform
