// One way in which a sign-in may go, and what the launcher has to be told in the end.

#pragma once

#include <string>
#include <vector>

#include "tests/tools/hand/Hand.h"

namespace tools {

struct Scene {
  std::string word;
  std::string forPeople;  // what a person is asked to do
  bool siteAnswers;
  void (*act)(Hand&);
  int code;  // of the launcher's answer
};

// The scenes that `word` stands for; none for an unknown word. A screen that nobody sees may show more of them: without
// a word a person signs in once, while the hand shows the enterprise sign-in too.
std::vector<Scene> scenesFor(const std::string& word, bool byHand);

}  // namespace tools
