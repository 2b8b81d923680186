#include "applog/Logger.h"
#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/logging/Line.h"
#include "bench/logging/Measures.h"
#include "logging/LoggingCore.h"
#include "tests/support/Files.h"

namespace bench {
namespace {

constexpr int lines = 20000;

template <typename Body>
double nanosecondsEach(int times, const Body& body) {
  return secondsOf([&] {
           for (int i = 0; i < times; ++i)
             body();
         }) *
         1e9 / times;
}

template <typename Body>
Pairs againstBareWrites(const std::string& bareFile, const Body& body) {
  const platform::UniqueFd file = openForAppending(bareFile);
  const std::string line = wholeLine();
  Pairs pairs;
  for (int i = 0; i < repetitions; ++i) {
    const double ours = nanosecondsEach(lines, body);
    pairs.add(ours, nanosecondsEach(lines, [&] { writeBare(file, line); }));
  }
  return pairs;
}

void measureFacade(const support::TemporaryFolder& folder) {
  Logger& logger = *Logger::getInstance();
  print("one line through the facade, against write(2)",
        againstBareWrites(folder / "bare", [&] { logger.logInfo("SVO", "%s", message); }), "ns", atMost(4.3));
}

void measureLibrary(const support::TemporaryFolder& folder) {
  tarn::LoggingCore& core = *tarn::LoggingCore::getInstance();
  tarn::LogTargetDefault target("bench");
  target.setLogFile("bench.log", folder.path().c_str());
  core.registerTarget(&target);
  print("one line through the library, against write(2)",
        againstBareWrites(folder / "bare",
                          [&] { core.log("bench", tarn::INFO, "", "QSU", "SVO", "SVO", "", "", message, 0); }),
        "ns", atMost(3.2));
  core.unregisterTarget(&target);
}

// A function call that the compiler must make.
__attribute__((noinline)) void emptyCall(const char* component, const char* format, ...) {
  asm volatile("" : : "r"(component), "r"(format) : "memory");
}

void measureFilteredCall() {
  constexpr int calls = 20000000;
  Logger& logger = *Logger::getInstance();
  Pairs pairs;
  for (int i = 0; i < repetitions; ++i) {
    const double ours = nanosecondsEach(calls, [&] { logger.logTrace("SVO", "value %d of %s", 42, message); });
    pairs.add(ours, nanosecondsEach(calls, [&] { emptyCall("SVO", "value %d of %s", 42, message); }));
  }
  print("a filtered-out call, against an empty one: " + shortNumber(pairs.peer()) + " ns", pairs.ours(), "ns",
        atMost(5));
}

}  // namespace

void measureSingleLines() {
  const support::TemporaryFolder folder;
  Logger::getInstance()->setLogLevel(Log_Level_Info, "SVO", nullptr);
  measureFacade(folder);
  measureLibrary(folder);
  measureFilteredCall();
}

}  // namespace bench
