// Benchmark of the sign-in window.
//
// - The time from the start of the program to its message, against bare-window.
// - The memory of all processes while a sign-in page is shown, against bare-window.
// - The time from a load failure to the end of the program, without a peer.
//
// Must be run through tests/support/in-own-home, so that no window uses the real home folder. The windows are shown on
// a virtual display. The exit status is 0 if everything was measured, whatever the results.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <ratio>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/Report.h"
#include "bench/window/BenchSite.h"
#include "bench/window/WindowRun.h"
#include "platform/Machine.h"
#include "tests/support/Home.h"
#include "tests/tools/hand/VirtualDisplay.h"

namespace {

using bench::BenchSite;
using bench::Pairs;
using bench::WindowRun;

constexpr std::size_t kPairsOfStarts = 25;
constexpr std::size_t kPairsOfMemory = 7;
constexpr std::size_t kFailures = 11;

enum class Side { kOurs, kPeer };

class WindowBench {
 public:
  Pairs start() { return inPairs(kPairsOfStarts, &WindowBench::millisecondsToMessage); }
  Pairs memory() { return inPairs(kPairsOfMemory, &WindowBench::memoryOfSignIn); }

  // Milliseconds; the maximum of all failures.
  double end() {
    double slowest = 0;
    for (std::size_t i = 0; i < kFailures; ++i)
      slowest = std::max(slowest, millisecondsFromFailureToEnd());
    return slowest;
  }

 private:
  using Measurement = double (WindowBench::*)(Side);

  // The first pair is not counted: it fills the disk cache and the font cache.
  Pairs inPairs(std::size_t count, Measurement measure) {
    (void)(this->*measure)(Side::kOurs);
    (void)(this->*measure)(Side::kPeer);

    Pairs pairs;
    while (pairs.size() < count) {
      const double ours = (this->*measure)(Side::kOurs);
      pairs.add(ours, (this->*measure)(Side::kPeer));
    }
    return pairs;
  }

  double millisecondsToMessage(Side side) {
    const auto begin = std::chrono::steady_clock::now();
    WindowRun run(command(side, site_.redirectingAddress()), display_.name());
    const std::string message = run.message();
    const std::chrono::duration<double, std::milli> time = std::chrono::steady_clock::now() - begin;

    if (message.rfind("<result>", 0) != 0) throw std::runtime_error("not signed in: " + message);
    run.waitForEnd();
    return time.count();
  }

  double millisecondsFromFailureToEnd() {
    WindowRun run(command(Side::kOurs, site_.failingAddress()), display_.name());
    const std::string message = run.message();
    if (message != "<errorNo><error>2</error></errorNo>") throw std::runtime_error("the load did not fail: " + message);
    run.waitForEnd();
    return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - site_.failedAt()).count();
  }

  double memoryOfSignIn(Side side) {
    const int shownBefore = site_.shown();
    WindowRun run(command(side, site_.signInAddress()), display_.name());
    run.waitFor([&] { return site_.shown() > shownBefore; });
    const double memory = run.memory();
    if (!(memory > 0)) throw std::runtime_error("the memory of the processes cannot be read");
    run.close();
    run.waitForEnd();
    return memory;
  }

  WindowRun::Command command(Side side, const std::string& signIn) const {
    const std::string folder = platform::bundlePath();
    const std::string redirect = site_.redirectAddress();
    if (side == Side::kPeer) {
      return [=](const std::string& pipe) {
        return std::vector<std::string>{folder + "/bare-window", signIn, redirect, pipe};
      };
    }
    const std::string enterprise = site_.enterpriseAddress();
    return [=](const std::string& pipe) {
      return std::vector<std::string>{folder + "/svo-signin",      "--zelURL=" + signIn,
                                      "--redirectURL=" + redirect, "--redirectType3URL=" + enterprise,
                                      "--productName=Example",     "--pipeName=" + pipe};
    };
  }

  tools::VirtualDisplay display_;
  BenchSite site_;
};

}  // namespace

int main() try {
  (void)support::ownHome();
  WindowBench bench;
  bench::printHead();
  bench::print("start of the program to its message", bench.start(), "ms", bench::atMost(1.05));
  bench::print("memory with the sign-in page shown", bench.memory(), "MB", bench::atMost(0.85));
  bench::print("failure to the end of the program, slowest", bench.end(), "ms", bench::atMost(500));
  return 0;
} catch (const std::exception& problem) {
  std::fprintf(stderr, "bench-window: %s\n", problem.what());
  return 1;
}
