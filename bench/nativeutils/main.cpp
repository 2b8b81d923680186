// Benchmark of the native utilities. Must be run through tests/support/in-own-home.

#include <cstdio>
#include <exception>

#include "bench/Report.h"
#include "bench/nativeutils/Figures.h"
#include "tests/support/Home.h"

int main() try {
  (void)support::ownHome();  // throws in a real home folder
  bench::printHead();
  bench::measureBase64();
  bench::measureFiles();
  bench::measureProcesses();
} catch (const std::exception& failure) {
  std::fprintf(stderr, "bench-nativeutils: %s\n", failure.what());
  return 1;
}
