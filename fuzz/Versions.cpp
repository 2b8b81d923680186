// Compares version parsing with a simple implementation. The input is two versions separated by a newline.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <sstream>
#include <string>

#include "fuzz/Fuzzing.h"
#include "nativeutils/System.h"
#include "platform/Machine.h"
#include "platform/Path.h"

namespace {

// The number in the leading digits; -1 if there are none or the number is too large.
long long leadingNumber(const std::string& text) {
  constexpr long long kLargest = std::numeric_limits<int>::max();
  const std::string digits = text.substr(0, text.find_first_not_of("0123456789"));
  long long number = digits.empty() ? -1 : 0;
  for (const char digit : digits)
    number = std::min(number * 10 + (digit - '0'), kLargest + 1);
  return number > kLargest ? -1 : number;
}

void requireRelease(const std::string& release) {
  std::array<long long, 3> expected{};
  std::string rest = release;
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const long long number = leadingNumber(rest);
    if (number < 0 && i == 0) {
      REQUIRE(!platform::systemVersionOfRelease(release));
      return;
    }
    if (number < 0) break;
    expected[i] = number;
    rest.erase(0, rest.find_first_not_of("0123456789"));
    if (rest.empty() || rest[0] != '.') break;
    rest.erase(0, 1);
  }
  const auto version = platform::systemVersionOfRelease(release);
  REQUIRE(version.has_value());
  REQUIRE(version->major == expected[0] && version->minor == expected[1] && version->bugFix == expected[2]);
}

using Numbers = std::array<std::int64_t, 3>;

Numbers parseSimply(const std::string& text) {
  std::istringstream pieces(platform::untilNul(text));
  Numbers numbers{};
  std::size_t count = 0;
  for (std::string piece; count < numbers.size() && std::getline(pieces, piece, '.');)
    if (!piece.empty()) numbers[count++] = std::atol(piece.c_str());
  return numbers;
}

os_version versionOf(const std::string& text) {
  os_version version{-1, -1, -1};
  REQUIRE(utilGetOSVersionFromOSVersionString(text, version));
  const Numbers expected = parseSimply(text);
  REQUIRE(version.major == expected[0] && version.minor == expected[1] && version.bugFix == expected[2]);
  return version;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto [first, second] = fuzz::twoTextsOf(data, size);
  requireRelease(first);

  os_version a = versionOf(first);
  os_version b = versionOf(second);
  const Numbers left = parseSimply(first);
  const Numbers right = parseSimply(second);
  REQUIRE(utilCompareOSVersion(a, b) == (left < right ? -1 : left > right ? 1 : 0));
  REQUIRE(utilCompareOSVersion(b, a) == -utilCompareOSVersion(a, b));
  return 0;
}
