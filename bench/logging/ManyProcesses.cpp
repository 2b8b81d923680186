#include <dlfcn.h>
#include <sched.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <numeric>
#include <string>
#include <thread>
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

using support::Child;
using support::Shared;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kMaxProcesses = 64;
constexpr std::chrono::milliseconds kDuration{1000};
constexpr int kRuns = 5;
constexpr std::size_t kMaxTimes = std::size_t{1} << 22;

// Logs one line. Created in each process before the measurement starts.
using WriteLine = std::function<void()>;

struct Side {
  std::function<WriteLine()> makeWriter;
  Child::Ending ending;
};

struct Result {
  double linesPerSecond;
  double slowestToFastest;  // lines of the slowest writer, at least 1, for each line of the fastest
  double milliseconds;      // 99.9 % of the lines take at most that long
};

// What the writers of one run share.
struct Run {
  // The nanoseconds of the lines, in one part for each process. Lines beyond the part are not recorded.
  struct Writer {
    std::atomic<int> lines{0};
    std::size_t recorded = 0;
  };

  std::atomic<int> ready{0};
  std::atomic<bool> started{false};
  std::atomic<bool> stopped{false};
  std::array<Writer, kMaxProcesses> writers;
  std::array<std::uint32_t, kMaxTimes> times;
};

void writeUntilStopped(Run& run, std::size_t number, std::size_t maxTimes, const WriteLine& writeLine) {
  Run::Writer& writer = run.writers[number];
  std::uint32_t* const times = &run.times[number * maxTimes];
  ++run.ready;
  while (!run.started)
    ::sched_yield();
  for (int line = 0; !run.stopped; ++line) {
    const auto before = Clock::now();
    writeLine();
    const auto took = (Clock::now() - before).count();
    if (writer.recorded < maxTimes) times[writer.recorded++] = static_cast<std::uint32_t>(took);
    writer.lines = line + 1;
  }
}

double percentile999(const Run& run, std::size_t processes, std::size_t maxTimes) {
  std::vector<std::uint32_t> all;
  for (std::size_t number = 0; number < processes; ++number) {
    const auto first = run.times.begin() + static_cast<std::ptrdiff_t>(number * maxTimes);
    all.insert(all.end(), first, first + static_cast<std::ptrdiff_t>(run.writers[number].recorded));
  }
  const auto place = all.end() - static_cast<std::ptrdiff_t>(all.size() / 1000) - 1;
  std::nth_element(all.begin(), place, all.end());
  return *place / 1e6;
}

// Runs the writers at the same time, from one signal to another.
Result measure(const Side& side, std::size_t processes) {
  const Shared<Run> run;
  const std::size_t maxTimes = kMaxTimes / processes;
  std::vector<Child> children;
  for (std::size_t number = 0; number < processes; ++number) {
    const auto write = [&, number] {
      writeUntilStopped(*run, number, maxTimes, side.makeWriter());
      return 0;
    };
    children.emplace_back(write, side.ending);
  }
  while (run->ready < static_cast<int>(processes))
    ::sched_yield();
  const double seconds = secondsOf([&] {
    run->started = true;
    std::this_thread::sleep_for(kDuration);
    run->stopped = true;
  });
  std::vector<int> lines;
  for (std::size_t number = 0; number < processes; ++number)
    lines.push_back(run->writers[number].lines);
  for (Child& child : children)
    child.wait();

  const auto [slowest, fastest] = std::minmax_element(lines.begin(), lines.end());
  return {std::accumulate(lines.begin(), lines.end(), 0.0) / seconds,
          static_cast<double>(std::max(*slowest, 1)) / *fastest, percentile999(*run, processes, maxTimes)};
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

// The figures of one number of processes, from runs of the three loggers in turn.
void measureProcesses(std::size_t processes, const std::string& folder) {
  const std::string peerLog = folder + "/peer.log";
  const std::string plainLog = folder + "/plain.log";
  Pairs throughput, plainThroughput, fairness, latency;
  for (int i = 0; i < kRuns; ++i) {
    const Result ours = measure(application(), processes);
    const Result peer = measure(locked(peerLog), processes);
    const Result plain = measure(plainWrites(plainLog), processes);
    throughput.add(ours.linesPerSecond, peer.linesPerSecond);
    plainThroughput.add(ours.linesPerSecond, plain.linesPerSecond);
    fairness.add(ours.slowestToFastest, peer.slowestToFastest);
    latency.add(ours.milliseconds, peer.milliseconds);
    std::filesystem::remove(peerLog);
    std::filesystem::remove(plainLog);
  }
  const std::string name = processes == 1 ? "1 process" : std::to_string(processes) + " processes";
  print(name + ", against a logger with a lock file", throughput, "lines/s", atLeast(processes <= 16 ? 0.9 : 1.05));
  print(name + ", against plain appending writes", plainThroughput, "lines/s");
  if (processes == 1) return;
  print(name + ", 99.9 % of lines take at most", latency, "ms", atMost(0.25));
  print(name + ", slowest writer to fastest", fairness, "", atLeast(1));
}

}  // namespace

void measureManyProcesses() {
  const support::TemporaryFolder folder;
  for (const std::size_t processes : {std::size_t{1}, std::size_t{4}, std::size_t{8}, std::size_t{16}, kMaxProcesses})
    measureProcesses(processes, folder.path());
}

}  // namespace bench
