// The scenarios of the demo, and the launcher's expected result of each.

#pragma once

#include <string>
#include <vector>

#include "tests/tools/hand/Hand.h"

namespace tools {

struct Scene {
  std::string word;
  std::string instruction;  // the instruction for the user
  bool siteAnswers;
  void (*act)(Hand&);
  int code;  // of the launcher's result
};

// Returns the scenes of the argument `word`; none for an unknown argument. Without an argument a user signs in once;
// the automated input also shows the enterprise sign-in.
std::vector<Scene> scenesFor(const std::string& word, bool byHand);

}  // namespace tools
