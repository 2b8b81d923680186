#include "bench/window/WindowRun.h"

#include <chrono>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/tools/support/EventLoop.h"

namespace bench {
namespace {

using namespace std::chrono_literals;

constexpr auto kTimeout = 30s;

bool endsWith(const std::string& text, const std::string& ending) {
  return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

tools::ChildProcess::Setup setupFor(std::vector<std::string> command, const std::string& display,
                                    const std::pair<std::string, std::string>& mark) {
  tools::ChildProcess::Setup setup;
  setup.command = std::move(command);
  setup.environment = {{"DISPLAY", display}, mark};
  return setup;
}

}  // namespace

WindowRun::WindowRun(const Command& command, const std::string& display)
    : pipe_(folder_ / "message"), window_(setupFor(command(pipe_.path()), display, family_.mark())) {}

std::string WindowRun::message() {
  waitFor([&] { return endsWith(pipe_.text(), "</result>") || endsWith(pipe_.text(), "</errorNo>"); });
  return pipe_.text();
}

void WindowRun::waitFor(const std::function<bool()>& condition) {
  bool isMet = false;
  const bool isInTime = tools::waitUntil(
      [&] {
        isMet = condition();
        return isMet || window_.ended();
      },
      kTimeout);
  if (isMet) return;
  throw std::runtime_error(isInTime ? "the window ended too early" : "timeout while waiting for the window");
}

void WindowRun::waitForEnd() {
  if (!tools::waitUntil([this] { return window_.ended(); }, kTimeout)) {
    throw std::runtime_error("timeout while waiting for the end of the window");
  }
  family_.end();
}

}  // namespace bench
