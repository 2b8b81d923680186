// The scenarios of the demo, and the launcher's expected result of each.

#pragma once

#include <string>
#include <vector>

#include "tests/tools/hand/AutomatedInput.h"

namespace tools {

struct Scenario {
  std::string name;
  std::string instruction;  // the instruction for the user
  bool siteResponds;
  void (*act)(AutomatedInput&);
  int code;  // of the launcher's result
};

// Returns the scenarios of the argument `name`; none for an unknown argument. Without an argument a user signs in once;
// the automated input also shows the enterprise sign-in.
std::vector<Scenario> scenariosFor(const std::string& name, bool isAutomated);

}  // namespace tools
