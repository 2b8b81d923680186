// What the targets share. A target is one LLVMFuzzerTestOneInput: libFuzzer calls it with inputs that it makes up, and
// Replay.cpp with those that have been kept.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Ends the process when the condition does not hold, which is what a target fails by.
#define REQUIRE(condition)                                                         \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

namespace fuzz {

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// Parts an input at its first newline; the second part is "" without one.
inline std::pair<std::string, std::string> twoTextsOf(const std::uint8_t* data, std::size_t size) {
  const std::string text = textOf(data, size);
  const std::size_t newline = text.find('\n');
  if (newline == std::string::npos) return {text, ""};
  return {text.substr(0, newline), text.substr(newline + 1)};
}

}  // namespace fuzz
