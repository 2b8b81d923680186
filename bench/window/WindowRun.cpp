#include "bench/window/WindowRun.h"

#include <glib-unix.h>

#include <chrono>
#include <stdexcept>
#include <utility>

#include "examples/launcher/Answer.h"
#include "tests/tools/support/EventLoop.h"

namespace bench {
namespace {

using namespace std::chrono_literals;

constexpr auto kPatience = 30s;

// Makes what arrives in a descriptor an event of the default main context.
class Arrival {
 public:
  explicit Arrival(int fd) : source_(g_unix_fd_add(fd, G_IO_IN, &Arrival::come, nullptr)) {}
  ~Arrival() { g_source_remove(source_); }
  Arrival(const Arrival&) = delete;
  Arrival& operator=(const Arrival&) = delete;

 private:
  static gboolean come(int, GIOCondition, gpointer) { return G_SOURCE_CONTINUE; }

  guint source_;
};

tools::ChildProcess::Setup setupFor(std::vector<std::string> command, const std::string& display,
                                    const std::pair<std::string, std::string>& mark) {
  tools::ChildProcess::Setup setup;
  setup.command = std::move(command);
  setup.environment = {{"DISPLAY", display}, mark};
  return setup;
}

}  // namespace

WindowRun::WindowRun(const Command& command, const std::string& display)
    : window_(setupFor(command(pipe_.path()), display, family_.mark())) {}

std::string WindowRun::message() {
  const Arrival arrival(pipe_.fd());
  std::string message;
  waitFor([&] {
    message += pipe_.readWhatIsThere();
    return launcher::isComplete(message);
  });
  return message;
}

void WindowRun::waitFor(const std::function<bool()>& condition) {
  bool came = false;
  const bool somethingHappened = tools::waitUntil(
      [&] {
        came = condition();
        return came || window_.ended();
      },
      kPatience);
  if (came) return;
  throw std::runtime_error(somethingHappened ? "the window has ended too early" : "waited in vain for the window");
}

void WindowRun::waitForEnd() {
  if (!tools::waitUntil([this] { return window_.ended(); }, kPatience)) {
    throw std::runtime_error("the window does not end");
  }
  family_.end();
}

}  // namespace bench
