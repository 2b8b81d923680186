// Measures the duration of a function call.

#pragma once

#include <chrono>

namespace bench {

template <typename Body>
double secondsOf(const Body& body) {
  const auto start = std::chrono::steady_clock::now();
  body();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

}  // namespace bench
