// Compares the Base64 codec with a simple implementation of its rules, and decodes what it has encoded.

#include "nativeutils/Base64.h"

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string>

#include "fuzz/Fuzzing.h"

namespace {

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

struct Decoded {
  std::string bytes;
  bool ok = true;
};

Decoded decodeSimply(const std::string& text) {
  std::string used;
  for (const char c : text)
    if ((c >= 48 && c <= 122) || c == '+' || c == '/') used += c;

  Decoded result;
  for (std::size_t i = 0; i < used.size(); i += 4) {
    const std::string group = used.substr(i, 4);
    int bytes = 3;
    if (group.size() == 4 && group[3] == '=') bytes = group[2] == '=' ? 1 : 2;
    const std::size_t padding = group.find('=');
    result.ok = group.size() == 4 && (padding == std::string::npos || padding == static_cast<std::size_t>(bytes) + 1);
    if (!result.ok) return result;

    unsigned long bits = 0;
    for (const char c : group) {
      const std::size_t value = kAlphabet.find(c);
      bits = bits * 64 + (value == std::string::npos ? 0 : value);
    }
    for (int byte = 0; byte < bytes; ++byte)
      result.bytes += static_cast<char>(bits >> (16 - 8 * byte) & 0xFF);
  }
  return result;
}

Decoded decode(const std::string& text) {
  Decoded result;
  Base64Decode(text.begin(), text.end(), std::back_inserter(result.bytes), result.ok);
  return result;
}

std::string encode(const std::string& bytes) {
  std::string text;
  Base64Encode(bytes.begin(), bytes.end(), std::back_inserter(text));
  return text;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string input = fuzz::textOf(data, size);
  const Decoded expected = decodeSimply(input);
  const Decoded actual = decode(input);
  REQUIRE(actual.ok == expected.ok);
  REQUIRE(actual.bytes == expected.bytes);

  const std::string text = encode(input);
  std::string textOfTemplate;
  Base64Encode(data, data + size, std::back_inserter(textOfTemplate));
  REQUIRE(text == textOfTemplate);
  const Decoded back = decode(text);
  REQUIRE(back.ok);
  REQUIRE(back.bytes == input);
  return 0;
}
