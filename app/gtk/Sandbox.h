// Whether the page process can be put into WebKit's sandbox on this machine.
//
// WebKit wraps the process with bubblewrap. Where that cannot work (no user namespaces, a container, an unusual home
// folder) WebKit would end the whole program in the middle of a start, so the same walls are put up once beforehand,
// around a program that does nothing.

#pragma once

#include <glib.h>

#include <optional>

// WebKit leaves a note on each sandboxed process in the person's runtime folder, and never takes it away. For atexit().
void removeSandboxNotes();

class SandboxTrial {
 public:
  // Starts the trial and returns at once.
  SandboxTrial();
  ~SandboxTrial();

  SandboxTrial(const SandboxTrial&) = delete;
  SandboxTrial& operator=(const SandboxTrial&) = delete;

  // Waits for the trial's end, two seconds at most; one that takes longer has failed.
  bool passed();

 private:
  bool waitForEnd();

  GPid process_ = 0;
  int ended_ = -1;  // closed by the process when it ends
  std::optional<bool> passed_;
};
