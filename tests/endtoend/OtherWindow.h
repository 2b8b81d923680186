// An empty window of another program on the same screen.

#pragma once

#include <memory>
#include <string>

#include "examples/hand/Screen.h"

namespace endtoend {

class OtherWindow {
 public:
  // Throws std::runtime_error when there is no such display.
  OtherWindow(const std::string& display, const examples::Area& frame);

  examples::WindowId id() const { return id_; }

 private:
  std::unique_ptr<_XDisplay, int (*)(_XDisplay*)> display_;
  examples::WindowId id_ = 0;
};

}  // namespace endtoend
