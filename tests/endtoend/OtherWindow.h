// An empty window of another program on the same screen.

#pragma once

#include <memory>
#include <string>

#include "tests/tools/hand/Screen.h"

namespace endtoend {

class OtherWindow {
 public:
  // Throws std::runtime_error if the display does not exist.
  OtherWindow(const std::string& display, const tools::Area& frame);

  tools::WindowId id() const { return id_; }

 private:
  std::unique_ptr<_XDisplay, int (*)(_XDisplay*)> display_;
  tools::WindowId id_ = 0;
};

}  // namespace endtoend
