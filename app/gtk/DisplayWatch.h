// Notices that the display has gone away, as at the end of a session, while there is time to say so: GTK itself would
// end the process on the spot.
//
// One at a time, on the main thread, made after the display has been opened.

#pragma once

#include <functional>

class DisplayWatch {
 public:
  // Calls `onLost` when the X server or the Wayland compositor is gone, and then ends the process in order, with
  // status 1. Any other display is not watched.
  explicit DisplayWatch(std::function<void()> onLost);
  ~DisplayWatch();

  DisplayWatch(const DisplayWatch&) = delete;
  DisplayWatch& operator=(const DisplayWatch&) = delete;
};
