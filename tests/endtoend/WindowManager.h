// A window manager on a screen of the test's, as a desktop session has one: openbox with the settings it comes with.

#pragma once

#include <filesystem>
#include <string>

#include "tests/endtoend/WatchedFolder.h"
#include "tests/tools/hand/Screen.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

class WindowManager {
 public:
  // Whether this system has the program for it.
  static bool isPossible();

  // Returns once the screen is managed; its own files lie in `folder`. Throws std::runtime_error when that does not
  // come.
  WindowManager(const tools::Screen& screen, const std::string& display, const std::filesystem::path& folder);

  // The window that has the keyboard, 0 for none.
  tools::WindowId activeWindow() const { return rootNumber("_NET_ACTIVE_WINDOW"); }

  // The window in front of all others, 0 for none.
  tools::WindowId frontWindow() const;

  // The desktops are 0 to 3.
  unsigned long currentDesktop() const { return rootNumber("_NET_CURRENT_DESKTOP"); }

 private:
  unsigned long rootNumber(const char* name) const;

  WatchedFolder folder_;
  const tools::Screen& screen_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
