// A program that is started, watched and, if need be, ended.
//
// Its end is an event of the default main context, so that waitUntil() can wait for it.

#pragma once

#include <gio/gio.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/tools/support/Owned.h"

namespace tools {

class ChildProcess {
 public:
  struct Setup {
    std::vector<std::string> command;                // [0] is the program: a path, or a name that is looked up in PATH
    std::map<std::string, std::string> environment;  // on top of this process's own
    std::string outputFile;                          // takes standard output; empty: it goes where this process's goes
    std::string errorFile;                           // the same for standard error
    int fd = -1;                                     // handed to the child as `fdInChild` and closed here
    int fdInChild = -1;
  };

  // Throws std::runtime_error when the program cannot be started. The child is ended when this thread ends.
  explicit ChildProcess(const Setup& setup);

  // Sends SIGTERM to a child that still runs and waits for its end.
  ~ChildProcess();

  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool ended() const;
  void signal(int number);

  // The exit status of a child that has ended by itself; nothing while it runs, or when a signal ended it.
  std::optional<int> exitStatus() const;

 private:
  Owned<GSubprocess> process_;
  pid_t pid_;
};

}  // namespace tools
