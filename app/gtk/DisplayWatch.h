// Reports that the display has been lost, for example at the end of a session. GTK would end the process at once.
//
// Main thread. One instance at a time, created after the display has been opened.

#pragma once

#include <functional>

class DisplayWatch {
 public:
  // Calls `onLost` when the connection to the X server or the Wayland compositor is lost, then exits with status 1.
  // Displays of other kinds are not watched.
  explicit DisplayWatch(std::function<void()> onLost);
  ~DisplayWatch();

  DisplayWatch(const DisplayWatch&) = delete;
  DisplayWatch& operator=(const DisplayWatch&) = delete;
};
