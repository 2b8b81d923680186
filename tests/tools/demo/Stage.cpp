#include "tests/tools/demo/Stage.h"

#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <utility>

#include "tests/tools/support/ClosedPort.h"
#include "tests/tools/support/EventLoop.h"

namespace tools {
namespace {

using namespace std::chrono_literals;

bool isSet(const char* variable) {
  const char* value = std::getenv(variable);
  return value != nullptr && *value != '\0';
}

}  // namespace

Stage::Stage(std::string build, std::string window) : build_(std::move(build)), window_(std::move(window)) {
  if (!std::filesystem::is_directory(build_)) throw std::runtime_error("there is no folder " + build_);
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) return;
  display_ = std::make_unique<VirtualDisplay>();
  std::filesystem::create_directories(build_ + "/demo");
}

bool Stage::play(const Scene& scene) {
  std::cout << "== " << scene.word << std::endl;
  SignInSite site;
  const ClosedPort nobody;
  const std::string signInAddress = scene.siteAnswers ? site.signInAddress() : nobody.address("/signin");

  if (!byHand()) {
    std::cout << scene.instruction << std::endl;
    const ChildProcess launcher(launch(site, signInAddress));
    return waitUntil([&] { return launcher.ended(); }, 1h);
  }

  Hand hand(site, display_->name(), build_ + "/demo");
  site.server().hold("/signin");
  const ChildProcess launcher(launch(site, signInAddress));
  if (scene.siteAnswers) hand.watchTheSpinner();
  scene.act(hand);
  if (!waitUntil([&] { return launcher.ended(); }, 30s)) throw std::runtime_error("waited in vain for the answer");
  return launcher.exitStatus() == scene.code;
}

ChildProcess::Setup Stage::launch(const SignInSite& site, const std::string& signInAddress) const {
  ChildProcess::Setup setup;
  setup.command = {build_ + "/bin/launcher", window_, signInAddress, site.redirectAddress(), site.enterpriseAddress()};
  if (byHand()) setup.environment = {{"DISPLAY", display_->name()}};
  return setup;
}

}  // namespace tools
