// A Wayland session on a screen that nobody sees: weston without keyboard or pointer, 1280 × 1024.

#pragma once

#include <filesystem>
#include <map>
#include <optional>
#include <string>

#include "tests/endtoend/WatchedFolder.h"
#include "tests/tools/hand/Picture.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {

class Compositor {
 public:
  // Whether this system has the program for it.
  static bool isPossible();

  // Returns once programs can connect; `folder` is the session's runtime folder. Throws std::runtime_error when that
  // does not come.
  explicit Compositor(const std::filesystem::path& folder);

  // What lets a program show its windows here.
  std::map<std::string, std::string> environment() const;

  // What the whole screen shows; nothing while the session is still starting.
  std::optional<tools::Picture> picture() const;

 private:
  std::filesystem::path folder_;
  WatchedFolder watched_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
