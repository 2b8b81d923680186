// Measures the log. Run it through tests/support/in-own-home.

#include <cstdio>
#include <exception>

#include "bench/Report.h"
#include "bench/logging/Measures.h"
#include "tests/support/Home.h"

int main() try {
  (void)support::ownHome();  // throws in a real home folder
  bench::printHead();
  bench::measureManyProcesses();  // first: children must not share a logger with this process
  bench::measureSingleLines();
  bench::measureRotation();
} catch (const std::exception& failure) {
  std::fprintf(stderr, "bench-logging: %s\n", failure.what());
  return 1;
}
