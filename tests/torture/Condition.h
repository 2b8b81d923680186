// An attack that lasts for a while, and the process that logs before, during and after it.

#pragma once

#include <functional>
#include <string>

#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {

// The functions run in the process that logs, except `prepare`.
struct Condition {
  enum class When { kAtStart, kWhileRunning, kAtCut };
  using Step = std::function<void()>;

  std::string name;
  When when;
  Step impose;
  Step lift = [] {};
  Step prepare = [] {};                                // runs before the process starts
  std::function<int()> violations = [] { return 0; };  // of what the name says
  bool losesEarlierLines = false;
  bool isPossible = true;  // for this user and in this build
  double limit = 61;       // seconds until a line is in the log again
};

// Prints the row of the condition. Lines may be lost until a minute after its end.
void run(Table& table, Scale scale, const Condition& condition);

}  // namespace torture
