// What this thread last requested from the desktop. Nothing is opened, raised or posted.

#pragma once

#include <sys/types.h>

#include <optional>
#include <string>

namespace doubles {

struct Notification {
  std::string name;
  std::string object;
  bool hasUserInfo = false;
  bool forAllSessions = false;
};

struct Desktop {
  std::optional<std::string> openedUrl;
  std::optional<pid_t> frontProcess;
  std::optional<Notification> notification;
};

inline thread_local Desktop desktop;

}  // namespace doubles
