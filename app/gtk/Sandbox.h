// Tests whether WebKit's sandbox works on this machine.
//
// - WebKit starts the web process with bubblewrap. If that fails (no user namespaces, a container, an unusual home
//   folder) WebKit aborts the whole program. The trial runs a program that does nothing in an equal sandbox.
// - A failed trial is repeated once: on a busy machine it may have been too slow.

#pragma once

#include <glib.h>

#include <optional>
#include <string>

#include "platform/UniqueFd.h"

// Removes the files that WebKit leaves in the user's runtime folder, one for each sandboxed process. Does nothing
// before the first `SandboxTrial`. Async-signal-safe.
void removeSandboxFiles();

class SandboxTrial {
 public:
  // Starts the trial and returns at once.
  SandboxTrial();
  ~SandboxTrial();

  SandboxTrial(const SandboxTrial&) = delete;
  SandboxTrial& operator=(const SandboxTrial&) = delete;

  // Waits at most two seconds for the trial, and at most four for its repetition. Returns why the sandbox does not
  // work; empty if it works.
  //   "bwrap refused to start a program"
  const std::string& failure();

 private:
  void begin();
  std::string waitForEnd(int seconds);

  GPid process_ = 0;
  platform::UniqueFd ended_;  // readable once the process has closed its output
  std::optional<std::string> failure_;
};
