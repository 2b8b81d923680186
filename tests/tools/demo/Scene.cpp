#include "tests/tools/demo/Scene.h"

#include <algorithm>
#include <iterator>

namespace tools {
namespace {

const std::vector<Scene>& allScenes() {
  static const std::vector<Scene> kScenes = {
      {"sign-in", "Sign in: any user name and password will do.", true, [](Hand& hand) { hand.signIn(); }, 0},
      {"enterprise", "Choose \"Sign in with your organization\", then any user name and password.", true,
       [](Hand& hand) { hand.signInWithTheOrganization(); }, 0},
      {"fail", "Nobody listens at this sign-in address, so there is nothing to do.", false, [](Hand&) {}, 2},
      {"close", "Close the window.", true, [](Hand& hand) { hand.closeTheWindow(); }, 1},
  };
  return kScenes;
}

}  // namespace

std::vector<Scene> scenesFor(const std::string& word, bool byHand) {
  std::vector<Scene> scenes;
  std::copy_if(allScenes().begin(), allScenes().end(), std::back_inserter(scenes), [&](const Scene& scene) {
    if (!word.empty()) return scene.word == word;
    return scene.word == "sign-in" || (byHand && scene.word == "enterprise");
  });
  return scenes;
}

}  // namespace tools
