#include "tests/endtoend/WindowManager.h"

#include <chrono>
#include <stdexcept>
#include <vector>

#include "platform/linux/Glib.h"
#include "tests/tools/support/EventLoop.h"

namespace endtoend {
namespace {

constexpr char kManaging[] = "managing";  // created when it sees every window, later than it announces itself

tools::ChildProcess::Setup setupFor(const std::string& display, const std::filesystem::path& folder) {
  tools::ChildProcess::Setup setup;
  setup.command = {"openbox", "--sm-disable", "--startup", "touch " + (folder / kManaging).string()};
  setup.environment = {{"DISPLAY", display}, {"XDG_CONFIG_HOME", folder}, {"XDG_CACHE_HOME", folder}};
  setup.outputFile = "/dev/null";
  setup.errorFile = "/dev/null";
  return setup;
}

}  // namespace

bool WindowManager::isPossible() {
  const platform::Owned<char, g_free> openbox(g_find_program_in_path("openbox"));
  return openbox != nullptr;
}

WindowManager::WindowManager(const tools::Screen& screen, const std::string& display,
                             const std::filesystem::path& folder)
    : folder_(folder), screen_(screen), process_(setupFor(display, folder)) {
  const auto manages = [&] { return std::filesystem::exists(folder / kManaging) || process_.ended(); };
  if (!tools::waitUntil(manages, std::chrono::seconds(30)) || process_.ended()) {
    throw std::runtime_error("openbox does not start");
  }
}

tools::WindowId WindowManager::topmostWindow() const {
  const std::vector<unsigned long> windows = screen_.numbersOf(screen_.root(), "_NET_CLIENT_LIST_STACKING");
  return windows.empty() ? 0 : windows.back();
}

unsigned long WindowManager::rootNumber(const char* name) const {
  const std::vector<unsigned long> numbers = screen_.numbersOf(screen_.root(), name);
  return numbers.empty() ? 0 : numbers.front();
}

}  // namespace endtoend
