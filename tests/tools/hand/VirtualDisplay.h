// A screen that nobody sees, for as long as this object lives: an X server of its own, no window manager. A key that is
// held down does not repeat: whoever presses it may be slow to let it go.

#pragma once

#include <memory>
#include <string>

#include "tests/tools/support/ChildProcess.h"

namespace tools {

struct ScreenSize {
  int width = 1280;
  int height = 1024;
};

class VirtualDisplay {
 public:
  // Returns once the server takes connections. Throws std::runtime_error when it does not start.
  explicit VirtualDisplay(const ScreenSize& size = {});

  //   ":99"
  const std::string& name() const { return name_; }

 private:
  std::unique_ptr<ChildProcess> server_;
  std::string name_;
};

}  // namespace tools
