// Runs a scenario: the site, the launcher and the sign-in window, on the user's display or on a virtual one.

#pragma once

#include <memory>
#include <string>

#include "tests/tools/demo/Scenario.h"
#include "tests/tools/hand/VirtualDisplay.h"
#include "tests/tools/support/ChildProcess.h"

namespace tools {

class DemoRunner {
 public:
  // `build` is the build folder, `launcher` the program svo-signin-ask. Without a display it creates a virtual one and
  // uses automated input, whose screenshots are in "demo" in the build folder.
  DemoRunner(std::string build, std::string launcher);

  bool isAutomated() const { return display_ != nullptr; }

  // Returns whether the launcher got the scenario's result; with a user, any result. Throws std::runtime_error if the
  // automated input or the launcher times out.
  bool run(const Scenario& scenario);

 private:
  ChildProcess::Setup launch(const SignInSite& site, const std::string& signInAddress) const;

  std::string build_;
  std::string launcher_;
  std::unique_ptr<VirtualDisplay> display_;
};

}  // namespace tools
