#include "tests/tools/demo/DemoRunner.h"

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

DemoRunner::DemoRunner(std::string build, std::string launcher)
    : build_(std::move(build)), launcher_(std::move(launcher)) {
  if (!std::filesystem::is_directory(build_)) throw std::runtime_error("there is no folder " + build_);
  if (isSet("DISPLAY") || isSet("WAYLAND_DISPLAY")) return;
  display_ = std::make_unique<VirtualDisplay>();
  std::filesystem::create_directories(build_ + "/demo");
}

bool DemoRunner::run(const Scenario& scenario) {
  std::cout << "== " << scenario.name << std::endl;
  SignInSite site;
  const ClosedPort closedPort;
  const std::string signInAddress = scenario.siteResponds ? site.signInAddress() : closedPort.address("/signin");

  if (!isAutomated()) {
    std::cout << scenario.instruction << std::endl;
    const ChildProcess launcher(launch(site, signInAddress));
    return waitUntil([&] { return launcher.ended(); }, 1h);
  }

  AutomatedInput input(site, display_->name(), build_ + "/demo");
  site.server().hold("/signin");
  const ChildProcess launcher(launch(site, signInAddress));
  if (scenario.siteResponds) input.waitForSpinner();
  scenario.act(input);
  if (!waitUntil([&] { return launcher.ended(); }, 30s)) throw std::runtime_error("timed out waiting for the launcher");
  return launcher.exitStatus() == scenario.code;
}

ChildProcess::Setup DemoRunner::launch(const SignInSite& site, const std::string& signInAddress) const {
  ChildProcess::Setup setup;
  setup.command = {launcher_,
                   "--zelURL=" + signInAddress,
                   "--redirectURL=" + site.redirectAddress(),
                   "--redirectType3URL=" + site.enterpriseAddress(),
                   "--productName=Example Product",
                   "--type3WindowTitle=Example Product for Enterprises",
                   "--json"};
  if (isAutomated()) setup.environment = {{"DISPLAY", display_->name()}};
  return setup;
}

}  // namespace tools
