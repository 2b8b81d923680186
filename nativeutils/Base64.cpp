#include "nativeutils/Base64.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <iterator>
#include <string>
#include <string_view>
#include <utility>

#include "applog/Logger.h"
#include "nativeutils/Component.h"

using nativeutils::kComponent;
using nativeutils_base64::Group;
using nativeutils_base64::kAlphabet;

namespace {

// The input and the output of a block fit into the first-level cache, so that copying a block costs less than filling
// the output with zeros first.
constexpr std::size_t kGroupsPerBlock = 1024;

const unsigned char* bytesOf(std::string_view text) {
  return reinterpret_cast<const unsigned char*>(text.data());
}

// At least doubles the capacity, so that many short appends take linear time.
void reserveMore(std::string& out, std::size_t count) {
  const std::size_t needed = out.size() + count;
  if (needed > out.capacity()) out.reserve(std::max(needed, 2 * out.size()));
}

struct Pair {
  char characters[2];
};

constexpr std::array<Pair, 4096> makePairs() {
  std::array<Pair, 4096> pairs{};
  for (std::size_t bits = 0; bits < pairs.size(); ++bits)
    pairs[bits] = {{kAlphabet[bits >> 6], kAlphabet[bits & 0x3F]}};
  return pairs;
}

// The two characters of 12 bits.
constexpr std::array<Pair, 4096> kPairs = makePairs();

unsigned groupBits(const unsigned char* bytes) {
  return unsigned{bytes[0]} << 16 | unsigned{bytes[1]} << 8 | bytes[2];
}

void encodeGroup(unsigned bits, char* out) {
  std::memcpy(out, kPairs[bits >> 12].characters, 2);
  std::memcpy(out + 2, kPairs[bits & 0xFFF].characters, 2);
}

// Encodes each 3 bytes as 4 characters.
void encodeGroups(const unsigned char* bytes, std::size_t groups, char* out) {
  // Four groups are loaded before the first store because the compiler must assume that `out` overlaps `bytes`.
  for (; groups >= 4; groups -= 4, bytes += 12, out += 16) {
    const unsigned first = groupBits(bytes);
    const unsigned second = groupBits(bytes + 3);
    const unsigned third = groupBits(bytes + 6);
    const unsigned fourth = groupBits(bytes + 9);
    encodeGroup(first, out);
    encodeGroup(second, out + 4);
    encodeGroup(third, out + 8);
    encodeGroup(fourth, out + 12);
  }
  for (; groups > 0; --groups, bytes += 3, out += 4)
    encodeGroup(groupBits(bytes), out);
}

// `bytes` must not overlap `out`.
void appendEncoded(std::string_view bytes, std::string& out) {
  reserveMore(out, (bytes.size() + 2) / 3 * 4);
  char block[kGroupsPerBlock * 4];
  while (bytes.size() >= 3) {
    const std::size_t groups = std::min(bytes.size() / 3, kGroupsPerBlock);
    encodeGroups(bytesOf(bytes), groups, block);
    out.append(block, groups * 4);
    bytes.remove_prefix(groups * 3);
  }
  Base64Encode(bytes.data(), bytes.data() + bytes.size(), std::back_inserter(out));
}

// Marks a character that is not in the alphabet.
constexpr std::uint32_t kForeign = 0x80000000;

// What each character contributes to the three bytes of its group. The first byte is in the lowest eight bits, so that
// storing the bytes needs no byte swap on little-endian processors.
constexpr std::array<std::uint32_t, 256> makeShiftedValues(int shift) {
  std::array<std::uint32_t, 256> values{};
  for (std::size_t c = 0; c < values.size(); ++c) {
    const std::uint32_t value = nativeutils_base64::valueOf(static_cast<unsigned char>(c));
    const std::uint32_t bits = value << shift;
    values[c] = value != 0 || c == 'A' ? bits >> 16 | (bits & 0xFF00) | (bits & 0xFF) << 16 : kForeign;
  }
  return values;
}

// By the position of the character in its group.
constexpr std::array<std::uint32_t, 256> kFirst = makeShiftedValues(18);
constexpr std::array<std::uint32_t, 256> kSecond = makeShiftedValues(12);
constexpr std::array<std::uint32_t, 256> kThird = makeShiftedValues(6);
constexpr std::array<std::uint32_t, 256> kFourth = makeShiftedValues(0);

struct Progress {
  const unsigned char* next;  // first character that is not decoded
  char* out;                  // end of the decoded bytes
};

// Decodes groups of four alphabet characters. Skips what `Base64Decode` skips, but only between groups. Stops at any
// other group, with less than 4 characters left, and with less than 3 bytes left in the output.
Progress decodeGroups(Progress progress, const unsigned char* end, const char* outEnd) {
  auto [next, out] = progress;
  for (;;) {
    std::ptrdiff_t groups = std::min((end - next) / 4, (outEnd - out) / 3);
    for (; groups > 0; --groups, next += 4, out += 3) {
      const std::uint32_t bits = kFirst[next[0]] | kSecond[next[1]] | kThird[next[2]] | kFourth[next[3]];
      if ((bits & kForeign) != 0) break;
      out[0] = static_cast<char>(bits);
      out[1] = static_cast<char>(bits >> 8);
      out[2] = static_cast<char>(bits >> 16);
      out[3] = static_cast<char>(bits >> 24);  // the compiler merges four stores into one, but not three
    }
    if (groups == 0 || nativeutils_base64::isTaken(*next)) return {next, out};
    ++next;
  }
}

// Returns false for a text that is not Base64; the bytes before the error are appended. `text` must not overlap `out`.
bool appendDecoded(std::string_view text, std::string& out) {
  reserveMore(out, text.size() / 4 * 3);
  char block[kGroupsPerBlock * 3 + 1];
  const char* const blockEnd = block + sizeof block - 1;
  const unsigned char* const end = bytesOf(text) + text.size();
  Progress progress{bytesOf(text), block};
  for (;;) {
    progress = decodeGroups(progress, end, blockEnd);
    if (blockEnd - progress.out < 3) {
      out.append(block, progress.out);
      progress.out = block;
      continue;
    }
    const Group group = nativeutils_base64::nextGroup(progress.next, end);
    if (nativeutils_base64::bytesIn(group) == 0) {
      out.append(block, progress.out);
      return group.count == 0;
    }
    progress.out = nativeutils_base64::decodeGroup(group, progress.out);
  }
}

// Reads the iterator's string, which is a protected member.
struct Inserter : std::back_insert_iterator<std::string> {
  static std::string& stringOf(const std::back_insert_iterator<std::string>& iterator) {
    return *(iterator.*&Inserter::container);
  }
};

std::string_view view(std::string::const_iterator begin, std::string::const_iterator end) {
  return begin == end ? std::string_view() : std::string_view(&*begin, static_cast<std::size_t>(end - begin));
}

bool pointsInto(const std::string& text, const char* place) {
  const std::less<> isBefore;
  return !isBefore(place, text.data()) && !isBefore(text.data() + text.size(), place);
}

}  // namespace

template <>
std::back_insert_iterator<std::string> Base64Encode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out) {
  appendEncoded(view(begin, end), Inserter::stringOf(out));
  return out;
}

template <>
std::back_insert_iterator<std::string> Base64Decode(std::string::const_iterator begin, std::string::const_iterator end,
                                                    std::back_insert_iterator<std::string> out, bool& ok) {
  ok = appendDecoded(view(begin, end), Inserter::stringOf(out));
  return out;
}

bool utilEncodeDataInBase64(const char* data, int length, std::string& out) {
  if (data == nullptr || length == 0) {
    Logger::getInstance()->logInfo(kComponent, "Invalid arguments to utilEncodeDataInBase64.");
    return false;
  }
  if (pointsInto(out, data)) {
    appendEncoded(std::string(data), out);
  } else {
    appendEncoded(data, out);
  }
  return true;
}

bool utilDecodeBase64Data(const char* base64, int length, std::string& out) {
  if (base64 == nullptr || length == 0) {
    Logger::getInstance()->logInfo(kComponent, "Invalid arguments to utilDecodeBase64Data.");
    return false;
  }
  std::string bytes;
  if (!appendDecoded(base64, bytes)) {
    Logger::getInstance()->logInfo(kComponent, "Failed to decode from base 64.");
    return false;
  }
  out = std::move(bytes);
  return true;
}
