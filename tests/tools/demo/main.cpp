// Demonstrates a sign-in with the example site, the launcher and the sign-in window.
//
//   demo BUILD_FOLDER [sign-in|enterprise|fail|close]
//
// - With a display the user signs in. Without one, automated input signs in on a virtual display and saves screenshots
//   in BUILD_FOLDER/demo.
// - The sign-in window is the program in BUILD_FOLDER, or the one named by the variable SVO_SIGNIN, whose folder
//   also contains svo-signin-ask.
// - Exits with 0 if the launcher got the expected result.

#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include "tests/tools/demo/DemoRunner.h"

namespace {

// The launcher beside the window, which starts that window.
std::string launcherProgram(const std::string& build) {
  const char* const named = std::getenv("SVO_SIGNIN");
  const bool isNamed = named != nullptr && *named != '\0';
  return std::filesystem::path(isNamed ? named : build + "/bin/svo-signin").replace_filename("svo-signin-ask");
}

int run(const std::string& build, const std::string& name) {
  tools::DemoRunner runner(build, launcherProgram(build));
  const std::vector<tools::Scenario> scenarios = tools::scenariosFor(name, runner.isAutomated());
  if (scenarios.empty()) {
    std::cerr << "demo: unknown scenario \"" << name << "\"; use sign-in, enterprise, fail or close\n";
    return 64;
  }
  for (const tools::Scenario& scenario : scenarios) {
    if (runner.run(scenario)) continue;
    std::cerr << "demo: the launcher got an unexpected result\n";
    return 1;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) try {
  if (argc < 2 || argc > 3) {
    std::cerr << "usage: [SVO_SIGNIN=PROGRAM] demo BUILD_FOLDER [sign-in|enterprise|fail|close]\n";
    return 64;
  }
  return run(argv[1], argc == 3 ? argv[2] : "");
} catch (const std::exception& problem) {
  std::cerr << "demo: " << problem.what() << '\n';
  return 1;
}
