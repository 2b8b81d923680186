#include "tests/tools/demo/Scenario.h"

#include <algorithm>
#include <iterator>

namespace tools {
namespace {

const std::vector<Scenario>& allScenarios() {
  static const std::vector<Scenario> kScenarios = {
      {"sign-in", "Sign in: any user name and password will do.", true, [](AutomatedInput& input) { input.signIn(); },
       0},
      {"enterprise", "Choose \"Sign in with your organization\", then any user name and password.", true,
       [](AutomatedInput& input) { input.signInWithTheOrganization(); }, 0},
      {"fail", "No server listens at this sign-in address. No input is needed.", false, [](AutomatedInput&) {}, 2},
      {"close", "Close the window.", true, [](AutomatedInput& input) { input.closeTheWindow(); }, 1},
  };
  return kScenarios;
}

}  // namespace

std::vector<Scenario> scenariosFor(const std::string& name, bool isAutomated) {
  std::vector<Scenario> scenarios;
  std::copy_if(allScenarios().begin(), allScenarios().end(), std::back_inserter(scenarios),
               [&](const Scenario& scenario) {
                 if (!name.empty()) return scenario.name == name;
                 return scenario.name == "sign-in" || (isAutomated && scenario.name == "enterprise");
               });
  return scenarios;
}

}  // namespace tools
