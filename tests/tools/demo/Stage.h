// Where a scene is played: the site, the launcher and the sign-in window, on a person's display or before the hand.

#pragma once

#include <memory>
#include <string>

#include "tests/tools/demo/Scene.h"
#include "tests/tools/hand/VirtualDisplay.h"
#include "tests/tools/support/ChildProcess.h"

namespace tools {

class Stage {
 public:
  // `build` is the folder that the programs were built in, `window` the sign-in window's program. Without a display of
  // its own it makes one, and the hand acts; the hand's pictures lie in "demo" under that folder.
  Stage(std::string build, std::string window);

  bool byHand() const { return display_ != nullptr; }

  // Returns whether the launcher got the scene's answer; a person may give any. Throws std::runtime_error when
  // something does not come that the hand waits for.
  bool play(const Scene& scene);

 private:
  ChildProcess::Setup launch(const SignInSite& site, const std::string& signInAddress) const;

  std::string build_;
  std::string window_;
  std::unique_ptr<VirtualDisplay> display_;
};

}  // namespace tools
