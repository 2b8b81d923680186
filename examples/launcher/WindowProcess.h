// The running sign-in window.

#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace launcher {

// One at a time: it handles SIGCHLD, and SIGINT and SIGTERM too, which close the window. The window then answers as if
// the user had closed it.
class WindowProcess {
 public:
  // Starts the program command[0]. Throws std::system_error when it cannot be started.
  explicit WindowProcess(const std::vector<std::string>& command);

  // Waits for the window's end. It closes by itself once it has sent its message.
  ~WindowProcess();

  WindowProcess(const WindowProcess&) = delete;
  WindowProcess& operator=(const WindowProcess&) = delete;

  // Waits until `fd` can be read, returning true, or the window has ended, returning false.
  bool waitForDataOrEnd(int fd);

 private:
  bool hasEnded();

  pid_t pid_ = -1;
};

}  // namespace launcher
