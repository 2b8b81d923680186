// A child process that is started, watched and, if necessary, ended.
//
// Its end is an event of the default main context, so that waitUntil() can wait for it.

#pragma once

#include <gio/gio.h>

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/Glib.h"

namespace tools {

// Waits for the end of a process, which need not be a child. Returns false after `timeout`. Needs Linux 5.3
// (pidfd_open); otherwise returns true at once.
bool endsWithin(pid_t process, std::chrono::milliseconds timeout);

class ChildProcess {
 public:
  struct Setup {
    std::vector<std::string> command;                // [0] is the program: a path, or a name to find in PATH
    std::map<std::string, std::string> environment;  // in addition to this process's own
    std::string outputFile;                          // for standard output; empty: inherited
    std::string errorFile;                           // for standard error; empty: inherited
    int fd = -1;                                     // passed to the child as `fdInChild` and closed here
    int fdInChild = -1;
  };

  // Throws std::runtime_error if the program cannot be started. The child is killed when this thread ends.
  explicit ChildProcess(const Setup& setup);

  // Sends SIGTERM to a running child and waits for its end. After 30 seconds SIGTERM is sent again, after 60
  // seconds SIGKILL.
  ~ChildProcess();

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool ended() const;
  void signal(int number);

  // The exit status; missing while the child runs or if a signal ended it.
  std::optional<int> exitStatus() const;

 private:
  platform::Owned<GSubprocess> process_;
  pid_t pid_;
};

}  // namespace tools
