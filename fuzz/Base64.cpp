// The codec in memory against a plain reading of its rules, on every road there is.

#include "nativeutils/Base64.h"

#include <cstdint>
#include <iterator>

#include "fuzz/Fuzzing.h"

namespace {

const std::string alphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Reading {
  std::string bytes;
  bool ok = true;
};

Reading readPlainly(const std::string& text) {
  std::string taken;
  for (const char c : text)
    if ((c >= 48 && c <= 122) || c == '+' || c == '/') taken += c;

  Reading reading;
  for (std::size_t i = 0; i < taken.size(); i += 4) {
    const std::string group = taken.substr(i, 4);
    int bytes = 3;
    if (group.size() == 4 && group[3] == '=') bytes = group[2] == '=' ? 1 : 2;
    const std::size_t padding = group.find('=');
    reading.ok = group.size() == 4 && (padding == std::string::npos || padding == static_cast<std::size_t>(bytes) + 1);
    if (!reading.ok) return reading;

    unsigned long bits = 0;
    for (const char c : group) {
      const std::size_t value = alphabet.find(c);
      bits = bits * 64 + (value == std::string::npos ? 0 : value);
    }
    for (int byte = 0; byte < bytes; ++byte)
      reading.bytes += static_cast<char>(bits >> (16 - 8 * byte) & 0xFF);
  }
  return reading;
}

Reading decoded(const std::string& text) {
  Reading reading;
  Base64Decode(text.begin(), text.end(), std::back_inserter(reading.bytes), reading.ok);
  return reading;
}

std::string encoded(const std::string& bytes) {
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input = fuzz::textOf(data, size);
  const Reading expected = readPlainly(input);
  const Reading actual = decoded(input);
  REQUIRE(actual.ok == expected.ok);
  REQUIRE(actual.bytes == expected.bytes);

  const std::string text = encoded(input);
  std::string plainText;
  Base64Encode(data, data + size, std::back_inserter(plainText));
  REQUIRE(text == plainText);
  const Reading back = decoded(text);
  REQUIRE(back.ok);
  REQUIRE(back.bytes == input);
  return 0;
}
