// Measures the log: run it through tests/support/in-own-home.

#include <cstdio>
#include <exception>

#include "bench/Report.h"
#include "bench/logging/Measures.h"
#include "tests/support/Home.h"

int main() try {
  (void)support::ownHome();  // throws in the home folder of a person
  bench::printHead();
  bench::measureFourProcesses();  // first, while this process has no logger that its children would share
  bench::measureSingleLines();
  bench::measureCutting();
} catch (const std::exception& failure) {
  std::fprintf(stderr, "bench-logging: %s\n", failure.what());
  return 1;
}
