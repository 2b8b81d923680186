// One run of a sign-in window, ours or the peer's: from the start of the program to the end of its last process.

#pragma once

#include <signal.h>

#include <functional>
#include <string>
#include <vector>

#include "bench/window/ProcessFamily.h"
#include "tests/endtoend/MessagePipe.h"
#include "tests/support/Files.h"
#include "tests/tools/support/ChildProcess.h"

namespace bench {

class WindowRun {
 public:
  // Returns the command that starts a window with the message pipe `pipePath`.
  using Command = std::function<std::vector<std::string>(const std::string& pipePath)>;

  // Starts the window on the X display `display`. Throws std::runtime_error if it cannot be started.
  WindowRun(const Command& command, const std::string& display);

  // Waits for the message of the window. Throws std::runtime_error after a timeout.
  std::string message();

  // Waits until `condition` is true. It is checked after each event of the default main context. Throws
  // std::runtime_error if the window ends before, and after a timeout.
  void waitFor(const std::function<bool()>& condition);

  double memory() const { return family_.memory(); }

  // Closes the window. It may not have sent its message yet.
  void close() { window_.signal(SIGTERM); }

  // Waits for the end of all processes. The window ends by itself after its message.
  void waitForEnd();

 private:
  support::TemporaryFolder folder_;
  endtoend::MessagePipe pipe_;
  ProcessFamily family_;
  tools::ChildProcess window_;
};

}  // namespace bench
