// The main bundle, as macOS reports it.

#pragma once

#include <optional>
#include <string>
#include <vector>

namespace doubles {

struct MainBundle {
  std::optional<std::string> path;        // default: the folder of the executable
  std::optional<std::string> executable;  // default: the running executable
  std::vector<long> architectures = {0x01000007};
};

inline MainBundle mainBundle;

}  // namespace doubles
