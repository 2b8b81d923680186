// Helpers for the fuzz targets.
//
// A target is one `LLVMFuzzerTestOneInput`. libFuzzer calls it with generated inputs, Replay.cpp with the stored inputs
// of fuzz/corpus.

#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>

// NOLINTNEXTLINE(readability-identifier-naming): name fixed by the interface
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

// Aborts the process if the condition is false. An abort is the failure of a target.
#define REQUIRE(condition)                                                         \
  do {                                                                             \
    if (!(condition)) {                                                            \
      std::fprintf(stderr, "%s:%d: failed: %s\n", __FILE__, __LINE__, #condition); \
      std::abort();                                                                \
    }                                                                              \
  } while (false)

namespace fuzz {

inline std::string textOf(const std::uint8_t* data, std::size_t size) {
  return std::string(reinterpret_cast<const char*>(data), size);
}

// Splits an input at its first newline. Without a newline the second part is "".
inline std::pair<std::string, std::string> twoTextsOf(const std::uint8_t* data, std::size_t size) {
  const std::string text = textOf(data, size);
  const std::size_t newline = text.find('\n');
  if (newline == std::string::npos) return {text, ""};
  return {text.substr(0, newline), text.substr(newline + 1)};
}

}  // namespace fuzz
