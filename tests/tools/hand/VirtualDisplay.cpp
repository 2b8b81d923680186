#include "tests/tools/hand/VirtualDisplay.h"

#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

#include "tests/tools/support/EventLoop.h"

namespace tools {
namespace {

constexpr std::chrono::seconds kTimeout{60};

// The server writes its display number and a newline when it is ready, and nothing if it fails.
std::string readLine(int fd) {
  std::string line;
  char character = 0;
  while (waitUntilReadable(fd, kTimeout) && read(fd, &character, 1) == 1 && character != '\n')
    line += character;
  return line;
}

}  // namespace

VirtualDisplay::VirtualDisplay(const ScreenSize& size) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("no pipe for the display");
  const std::string screen = std::to_string(size.width) + "x" + std::to_string(size.height) + "x24";
  ChildProcess::Setup setup;
  setup.command = {"Xvfb", "-displayfd", "3", "-screen", "0", screen, "-nolisten", "tcp", "-noreset", "-r"};
  setup.errorFile = "/dev/null";
  setup.fd = ends[1];
  setup.fdInChild = 3;
  server_ = std::make_unique<ChildProcess>(setup);
  const std::string number = readLine(ends[0]);
  close(ends[0]);
  if (number.empty()) throw std::runtime_error("Xvfb does not start");
  name_ = ":" + number;
}

}  // namespace tools
