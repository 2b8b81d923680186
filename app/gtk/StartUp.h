// What the program does before it opens a display, in this order: `prepareDescriptors`, `TerminationSignals`,
// `prepareLocale`. Main thread.

#pragma once

#include <glib.h>

#include <array>
#include <functional>

// Opens /dev/null for each closed standard descriptor, so that no file opened later receives what a library prints.
// Child processes inherit no other descriptor of the launcher. Ignores SIGPIPE, so that printing to a closed pipe does
// not end the program.
void prepareDescriptors();

// Sets the user's locale for characters and messages only: numbers and times in the shared log file must not depend on
// it.
void prepareLocale();

// Turns SIGTERM, SIGINT and SIGHUP into a call on the GLib main loop.
//
// From its construction to the end of the process these signals do not end the process. Create one and keep it.
class TerminationSignals {
 public:
  TerminationSignals();

  TerminationSignals(const TerminationSignals&) = delete;
  TerminationSignals& operator=(const TerminationSignals&) = delete;

  // Calls `handler` for each signal from now on, and once for a signal that came before.
  void deliverTo(std::function<void()> handler);

 private:
  static gboolean onSignal(gpointer self);

  std::array<GSource*, 3> sources_;  // never destroyed: that would restore the signals' default action
  std::function<void()> handler_;
};
