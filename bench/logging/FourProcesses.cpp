#include <dlfcn.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
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

constexpr int kProcesses = 4;
constexpr int kLinesEach = 20000;

using support::Child;
using support::Shared;

// Logs one line. Created in each process before the measurement starts.
using WriteLine = std::function<void()>;

struct Side {
  std::function<WriteLine()> makeWriter;
  Child::Ending ending;
};

using Clock = std::chrono::steady_clock;

// Runs the writers concurrently and returns the seconds from the first line to the last. Calls `took`, if it is not
// null, for each line with process, line and nanoseconds.
double secondsOfFour(const Side& side, const std::function<void(int, int, std::int64_t)>& took = nullptr) {
  const Shared<std::atomic<int>> ready;
  const Shared<std::atomic<bool>> started;
  const Shared<std::array<Clock::time_point, kProcesses>> ended;
  std::vector<Child> children;
  for (int process = 0; process < kProcesses; ++process) {
    const auto body = [&, process] {
      const WriteLine writeLine = side.makeWriter();
      ++*ready;
      while (!*started)
        ::sched_yield();
      for (int line = 0; line < kLinesEach; ++line) {
        const auto before = Clock::now();
        writeLine();
        if (took) took(process, line, (Clock::now() - before).count());
      }
      (*ended)[static_cast<std::size_t>(process)] = Clock::now();
      return 0;
    };
    children.emplace_back(body, side.ending);
  }
  while (*ready < kProcesses)
    ::sched_yield();
  const auto start = Clock::now();
  *started = true;
  for (Child& child : children)
    child.wait();
  return std::chrono::duration<double>(*std::max_element(ended->begin(), ended->end()) - start).count();
}

Side application() {
  const auto makeWriter = [] {
    Logger* logger = Logger::getInstance();
    logger->setLogLevel(Log_Level_Info, "SVO", nullptr);
    return [logger] { logger->logInfo("SVO", "%s", kMessage); };
  };
  return {makeWriter, Child::Ending::kOrderly};
}

Side plainWrites(const std::string& path) {
  const auto makeWriter = [path] {
    return [file = std::make_shared<platform::UniqueFd>(openForAppending(path)), line = wholeLine()] {
      writePlain(*file, line);
    };
  };
  return {makeWriter, Child::Ending::kAbrupt};
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
    return [log = functionOfPeer("logWithLockedPeer")] { log(kMessage); };
  };
  return {makeWriter, Child::Ending::kAbrupt};
}

void measureThroughput(const std::string& name, const Side& peer, Bar bar) {
  constexpr double kLines = kProcesses * kLinesEach;
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double ours = kLines / secondsOfFour(application());
    pairs.add(ours, kLines / secondsOfFour(peer));
  }
  print(name, pairs, "lines/s", bar);
}

double percentile999InMilliseconds() {
  struct Times {
    std::int64_t nanoseconds[kProcesses][kLinesEach];
  };
  const Shared<Times> times;
  secondsOfFour(application(),
                [&](int process, int line, std::int64_t took) { times->nanoseconds[process][line] = took; });
  std::int64_t* const first = &times->nanoseconds[0][0];
  std::int64_t* const last = first + kProcesses * kLinesEach;
  std::int64_t* const place = last - kProcesses * kLinesEach / 1000;
  std::nth_element(first, place, last);
  return static_cast<double>(*place) / 1e6;
}

}  // namespace

void measureFourProcesses() {
  const support::TemporaryFolder folder;
  measureThroughput("four processes, against a logger with a lock file", locked(folder / "peer.log"), atLeast(1.1));
  measureThroughput("four processes, against plain appending writes", plainWrites(folder / "plain"), atLeast(0.30));

  std::vector<double> percentiles(kRepetitions);
  std::generate(percentiles.begin(), percentiles.end(), percentile999InMilliseconds);
  print("99.9 % of lines of four processes take at most", median(percentiles), "ms", atMost(1));
}

}  // namespace bench
