// A window manager on the test's screen: openbox with its default settings.

#pragma once

#include <filesystem>
#include <string>

#include "tests/endtoend/WatchedFolder.h"
#include "tests/tools/hand/Screen.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

class WindowManager {
 public:
  // Whether this system has openbox.
  static bool isPossible();

  // Returns when the screen is managed. Its files are in `folder`. Throws std::runtime_error if it does not start.
  WindowManager(const tools::Screen& screen, const std::string& display, const std::filesystem::path& folder);

  // The window with the keyboard focus, 0 if none.
  tools::WindowId activeWindow() const { return rootNumber("_NET_ACTIVE_WINDOW"); }

  // The topmost window, 0 if none.
  tools::WindowId topmostWindow() const;

  // 0 to 3.
  unsigned long currentDesktop() const { return rootNumber("_NET_CURRENT_DESKTOP"); }

 private:
  unsigned long rootNumber(const char* name) const;

  WatchedFolder folder_;
  const tools::Screen& screen_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
