// Who sits at the machine, as the system's settings tell; a test decides.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace doubles {

struct ConsoleUser {
  std::string name;
  uid_t id = 0;
};

// Nobody at first.
inline std::optional<ConsoleUser> consoleUser;

}  // namespace doubles
