#include <dlfcn.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "applog/Logger.h"
#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/logging/Line.h"
#include "bench/logging/Measures.h"
#include "platform/Machine.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

constexpr int processes = 4;
constexpr int linesEach = 20000;

using support::Child;
using support::Shared;

// Logs one line; made in each process by its own maker, before the clock runs.
using WriteLine = std::function<void()>;

struct Side {
  std::function<WriteLine()> makeWriter;
  Child::Ending ending;
};

using Clock = std::chrono::steady_clock;

// Runs the writers side by side, and tells the seconds from the first line to the last. What each line took is told to
// `took`, when that is given, as process, line and nanoseconds.
double secondsOfFour(const Side& side, const std::function<void(int, int, std::int64_t)>& took = nullptr) {
  const Shared<std::atomic<int>> ready;
  const Shared<std::atomic<bool>> started;
  const Shared<std::array<Clock::time_point, processes>> ended;
  std::vector<Child> children;
  for (int process = 0; process < processes; ++process) {
    const auto body = [&, process] {
      const WriteLine writeLine = side.makeWriter();
      ++*ready;
      while (!*started)
        ::sched_yield();
      for (int line = 0; line < linesEach; ++line) {
        const auto before = Clock::now();
        writeLine();
        if (took) took(process, line, (Clock::now() - before).count());
      }
      (*ended)[static_cast<std::size_t>(process)] = Clock::now();
      return 0;
    };
    children.emplace_back(body, side.ending);
  }
  while (*ready < processes)
    ::sched_yield();
  const auto start = Clock::now();
  *started = true;
  for (Child& child : children)
    child.wait();
  return std::chrono::duration<double>(*std::max_element(ended->begin(), ended->end()) - start).count();
}

Side facade() {
  const auto makeWriter = [] {
    Logger* logger = Logger::getInstance();
    logger->setLogLevel(Log_Level_Info, "SVO", nullptr);
    return [logger] { logger->logInfo("SVO", "%s", message); };
  };
  return {makeWriter, Child::Ending::orderly};
}

Side bare(const std::string& path) {
  const auto makeWriter = [path] {
    return [file = std::make_shared<platform::UniqueFd>(openForAppending(path)), line = wholeLine()] {
      writeBare(*file, line);
    };
  };
  return {makeWriter, Child::Ending::abrupt};
}

using PeerFunction = void(const char*);

PeerFunction* functionOfPeer(const char* name) {
  static void* const module = ::dlopen((platform::bundlePath() + "/bench-locked-peer.so").c_str(), RTLD_NOW);
  void* const function = module == nullptr ? nullptr : ::dlsym(module, name);
  if (function != nullptr) return reinterpret_cast<PeerFunction*>(function);
  std::fprintf(stderr, "bench-logging: %s\n", ::dlerror());
  ::_exit(1);
}

Side locked(const std::string& path) {
  const auto makeWriter = [path] {
    functionOfPeer("openLockedPeer")(path.c_str());
    return [log = functionOfPeer("logWithLockedPeer")] { log(message); };
  };
  return {makeWriter, Child::Ending::abrupt};
}

void measureThroughput(const std::string& name, const Side& peer, Bar bar) {
  constexpr double lines = processes * linesEach;
  Pairs pairs;
  for (int i = 0; i < repetitions; ++i) {
    const double ours = lines / secondsOfFour(facade());
    pairs.add(ours, lines / secondsOfFour(peer));
  }
  print(name, pairs, "lines/s", bar);
}

double worstOfAThousandInMilliseconds() {
  struct Times {
    std::int64_t nanoseconds[processes][linesEach];
  };
  const Shared<Times> times;
  secondsOfFour(facade(), [&](int process, int line, std::int64_t took) { times->nanoseconds[process][line] = took; });
  std::int64_t* const first = &times->nanoseconds[0][0];
  std::int64_t* const last = first + processes * linesEach;
  std::int64_t* const place = last - processes * linesEach / 1000;
  std::nth_element(first, place, last);
  return static_cast<double>(*place) / 1e6;
}

}  // namespace

void measureFourProcesses() {
  const support::TemporaryFolder folder;
  measureThroughput("four processes, against a logger with a lock file", locked(folder / "peer.log"), atLeast(1.1));
  measureThroughput("four processes, against bare appending writes", bare(folder / "bare"), atLeast(0.30));

  std::vector<double> worst(repetitions);
  std::generate(worst.begin(), worst.end(), worstOfAThousandInMilliseconds);
  print("99.9 % of lines of four processes take at most", median(worst), "ms", atMost(1));
}

}  // namespace bench
