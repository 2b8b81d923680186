// Measures the native utilities: run it through tests/support/in-own-home.

#include <cstdio>
#include <exception>

#include "bench/Report.h"
#include "bench/nativeutils/Figures.h"
#include "tests/support/Home.h"

int main() try {
  (void)support::ownHome();  // throws in the home folder of a person
  bench::printHead();
  bench::measureBase64();
  bench::measureFiles();
  bench::measureProcesses();
} catch (const std::exception& failure) {
  std::fprintf(stderr, "bench-nativeutils: %s\n", failure.what());
  return 1;
}
