#include <string>

#include "applog/Logger.h"
#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/logging/Line.h"
#include "bench/logging/Measures.h"
#include "logging/LoggingCore.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

constexpr int kLines = 20000;

template <typename Body>
double nanosecondsEach(int times, const Body& body) {
  return secondsOf([&] {
           for (int i = 0; i < times; ++i)
             body();
         }) *
         1e9 / times;
}

template <typename Body>
Pairs againstPlainWrites(const std::string& path, const Body& body) {
  const platform::UniqueFd file = openForAppending(path);
  const std::string line = wholeLine();
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double ours = nanosecondsEach(kLines, body);
    pairs.add(ours, nanosecondsEach(kLines, [&] { writePlain(file, line); }));
  }
  return pairs;
}

void measureApplicationLogger(const support::TemporaryFolder& folder) {
  Logger& logger = *Logger::getInstance();
  print("one line through Logger, against write(2)",
        againstPlainWrites(folder / "plain", [&] { logger.logInfo("SVO", "%s", kMessage); }), "ns", atMost(4.6));
}

void measureLibrary(const support::TemporaryFolder& folder) {
  tarn::LoggingCore& core = *tarn::LoggingCore::getInstance();
  tarn::LogTargetDefault target("bench");
  target.setLogFile("bench.log", folder.path().c_str());
  core.registerTarget(&target);
  print("one line through LoggingCore, against write(2)",
        againstPlainWrites(folder / "plain",
                           [&] { core.log("bench", tarn::INFO, "", "QSU", "SVO", "SVO", "", "", kMessage, 0); }),
        "ns", atMost(3.2));
  core.unregisterTarget(&target);
}

// The asm statement keeps the compiler from removing the call.
__attribute__((noinline)) void emptyCall(const char* component, const char* format, ...) {
  asm volatile("" : : "r"(component), "r"(format) : "memory");
}

void measureFilteredCall() {
  constexpr int kCalls = 20000000;
  Logger& logger = *Logger::getInstance();
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double ours = nanosecondsEach(kCalls, [&] { logger.logTrace("SVO", "value %d of %s", 42, kMessage); });
    pairs.add(ours, nanosecondsEach(kCalls, [&] { emptyCall("SVO", "value %d of %s", 42, kMessage); }));
  }
  print("a filtered-out call, against an empty one: " + shortNumber(pairs.peer()) + " ns", pairs.ours(), "ns",
        atMost(5));
}

}  // namespace

void measureSingleLines() {
  const support::TemporaryFolder folder;
  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);
  measureApplicationLogger(folder);
  measureLibrary(folder);
  measureFilteredCall();
}

}  // namespace bench
