// Shows the main job from end to end: the example site, the launcher, the sign-in window, an answer.
//
//   demo BUILD_FOLDER [sign-in|enterprise|fail|close]
//
// On a display a person does the rest. Without one an automated hand acts like a person, and its pictures lie in
// BUILD_FOLDER/demo. The window is the one in BUILD_FOLDER, or the program that the variable SVO_SIGNIN names. Exits
// with 0 when the launcher got the answer that belongs to the word.

#include <cstdlib>
#include <exception>
#include <iostream>
#include <string>
#include <vector>

#include "tests/tools/demo/Stage.h"

namespace {

std::string windowProgram(const std::string& build) {
  const char* const named = std::getenv("SVO_SIGNIN");
  return named != nullptr && *named != '\0' ? named : build + "/bin/svo-signin";
}

int play(const std::string& build, const std::string& word) {
  tools::Stage stage(build, windowProgram(build));
  const std::vector<tools::Scene> scenes = tools::scenesFor(word, stage.byHand());
  if (scenes.empty()) {
    std::cerr << "demo: there is no \"" << word << "\"; try sign-in, enterprise, fail or close\n";
    return 64;
  }
  for (const tools::Scene& scene : scenes) {
    if (stage.play(scene)) continue;
    std::cerr << "demo: the launcher got another answer than it should\n";
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
  return play(argv[1], argc == 3 ? argv[2] : "");
} catch (const std::exception& problem) {
  std::cerr << "demo: " << problem.what() << '\n';
  return 1;
}
