#include <spawn.h>
#include <sys/wait.h>

#include <stdexcept>
#include <string>

#include "bench/Report.h"
#include "bench/Seconds.h"
#include "bench/nativeutils/Figures.h"
#include "nativeutils/Log.h"
#include "nativeutils/Processes.h"

namespace bench {
namespace {

constexpr const char* kProgram = "/bin/true";

void require(bool condition) {
  if (!condition) throw std::runtime_error("a program did not start or end as expected");
}

void run() {
  unsigned long status = 0, returnCode = 1;
  require(utilCreateProcessWithReturnCode(kProgram, {}, status, true, returnCode, false) && returnCode == 0);
}

void runBare() {
  std::string program = kProgram;
  char* const arguments[] = {program.data(), nullptr};
  pid_t process = 0;
  int status = 0;
  require(::posix_spawn(&process, kProgram, nullptr, nullptr, arguments, ::environ) == 0 &&
          ::waitpid(process, &status, 0) == process && status == 0);
}

}  // namespace

void measureProcesses() {
  constexpr int kInfoLevel = 4;
  constexpr int kTimes = 100;
  utilSetLogLevel(kInfoLevel, "bench-nativeutils", nullptr);
  const auto milliseconds = [](void (*body)()) {
    return 1e3 / kTimes * secondsOf([&] {
             for (int i = 0; i < kTimes; ++i)
               body();
           });
  };
  Pairs pairs;
  for (int i = 0; i < kRepetitions; ++i) {
    const double ours = milliseconds(run);
    pairs.add(ours, milliseconds(runBare));
  }
  print("a program to its end, against posix_spawn", pairs, "ms", atMost(1.2));
}

}  // namespace bench
