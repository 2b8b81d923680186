// Whether the page process can be put into WebKit's sandbox on this machine.
//
// WebKit wraps the process with bubblewrap. Where that cannot work (no user namespaces, a container, an unusual home
// folder) WebKit would end the whole program in the middle of a start, so the same walls are put up beforehand, around
// a program that does nothing. A trial that fails is repeated once: a busy machine may have been too slow for it.

#pragma once

#include <glib.h>

#include <optional>
#include <string>

// WebKit leaves a note on each sandboxed process in the person's runtime folder, and never takes it away. For atexit().
void removeSandboxFiles();

class SandboxTrial {
 public:
  // Starts the trial and returns at once.
  SandboxTrial();
  ~SandboxTrial();

  SandboxTrial(const SandboxTrial&) = delete;
  SandboxTrial& operator=(const SandboxTrial&) = delete;

  // Waits for the end of the trial, at most two seconds, and then for that of the second, at most four. Returns why
  // pages cannot be put into the sandbox; empty when they can.
  //   "bwrap refused to start a program"
  const std::string& obstacle();

 private:
  void begin();
  std::string waitForEnd(int seconds);

  GPid process_ = 0;
  int ended_ = -1;  // closed by the process when it ends
  std::optional<std::string> obstacle_;
};
