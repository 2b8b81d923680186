// The main bundle as a Mac tells it: the folder of a plain program, or the one whose name ends in ".app".

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace doubles {

struct MainBundle {
  std::optional<std::string> path;        // the folder that holds the executable
  std::optional<std::string> executable;  // the true one
  std::vector<long> architectures = {0x01000007};
};

inline MainBundle mainBundle;

}  // namespace doubles
