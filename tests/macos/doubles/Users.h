// The console user.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace doubles {

struct ConsoleUser {
  std::string name;
  uid_t id = 0;
};

inline std::optional<ConsoleUser> consoleUser;

}  // namespace doubles
