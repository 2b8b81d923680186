// A Wayland session on a virtual screen: weston without keyboard or pointer, 1280 × 1024.

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
  // Whether this system has weston.
  static bool isPossible();

  // Returns when programs can connect. `folder` is the session's runtime folder. Throws std::runtime_error if it does
  // not start.
  explicit Compositor(const std::filesystem::path& folder);

  // The environment of a program that shows its windows here.
  std::map<std::string, std::string> environment() const;

  // Returns a picture of the whole screen; nothing while the session is starting.
  std::optional<tools::Picture> picture() const;

 private:
  std::filesystem::path folder_;
  WatchedFolder watched_;
  tools::ChildProcess process_;
};

}  // namespace endtoend
