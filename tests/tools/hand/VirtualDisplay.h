// A virtual X display without a window manager. Key repeat is off, so that a slow machine does not repeat a key.

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
  // Returns when the server accepts connections. Throws std::runtime_error if it does not start.
  explicit VirtualDisplay(const ScreenSize& size = {});

  //   ":99"
  const std::string& name() const { return name_; }

 private:
  std::unique_ptr<ChildProcess> server_;
  std::string name_;
};

}  // namespace tools
