// A screen that nobody sees, for as long as this object lives: an X server of its own, 1280 × 1024, no window manager.

#pragma once

#include <memory>
#include <string>

#include "examples/support/ChildProcess.h"

namespace examples {

class VirtualDisplay {
 public:
  // Returns once the server takes connections. Throws std::runtime_error when it does not start.
  VirtualDisplay();

  //   ":99"
  const std::string& name() const { return name_; }

 private:
  std::unique_ptr<ChildProcess> server_;
  std::string name_;
};

}  // namespace examples
