// SIGTERM, SIGINT and SIGHUP as a call on the GLib main loop.
//
// From the construction on, to the end of the process, these signals no longer kill it: whatever the program does when
// one arrives, also while it starts or tidies up, is done to its end. Make one, early, and keep it; main thread only.

#pragma once

#include <glib.h>

#include <array>
#include <functional>

class TerminationSignals {
 public:
  TerminationSignals();

  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // From now on each signal calls `handler` on the main loop; so does, once, a signal that came before.
  void deliverTo(std::function<void()> handler);

 private:
  static gboolean onSignal(gpointer self);

  std::array<GSource*, 3> sources_;  // never destroyed: that would give the signals their deadly default back
  std::function<void()> handler_;
};
