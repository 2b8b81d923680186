#include "nativeutils/UserFolder.h"

#include <unistd.h>

#include <optional>

#include "platform/Users.h"

bool util_getUserFolderPath(std::string& path) {
  path = platform::homeFolder();
  return true;
}

bool utilGetUserFolderPath(std::string& path) {
  const std::optional<uid_t> console = platform::consoleUser();
  const uid_t self = ::geteuid();
  if (!console || *console == self) return util_getUserFolderPath(path);

  // A process that may not switch looks up its own user's folder.
  [[maybe_unused]] const int became = ::seteuid(*console);
  const bool found = util_getUserFolderPath(path);
  [[maybe_unused]] const int returned = ::seteuid(self);
  return found;
}
