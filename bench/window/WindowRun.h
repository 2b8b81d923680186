// One run of a sign-in window, the project's own or the bare one, from its start to its last process's end.

#pragma once

#include <signal.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/window/ProcessFamily.h"
#include "examples/launcher/AnswerPipe.h"
#include "tests/tools/support/ChildProcess.h"

namespace bench {

class WindowRun {
 public:
  // The command that starts a window which answers into the pipe at `pipePath`.
  using Command = std::function<std::vector<std::string>(const std::string& pipePath)>;

  // Starts the window on the X display `display`. Throws std::runtime_error when it cannot be started.
  WindowRun(const Command& command, const std::string& display);

  // Waits for the window's message and returns it. Throws std::runtime_error when none comes.
  std::string message();

  // Waits until `condition` holds, which an event of the default main context has to make true. Throws
  // std::runtime_error when the window ends before, or nothing happens for long.
  void waitFor(const std::function<bool()>& condition);

  double memory() const { return family_.memory(); }

  // Closes the window, which need not have given its message.
  void close() { window_.signal(SIGTERM); }

  // Waits until nothing of the window runs any more. It ends by itself after its message.
  void waitForEnd();

 private:
  launcher::AnswerPipe pipe_;
  ProcessFamily family_;
  tools::ChildProcess window_;
};

}  // namespace bench
