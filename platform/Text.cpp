#include "platform/Text.h"

#include <cstddef>

namespace platform {
namespace {

using Byte = unsigned char;

std::size_t sequenceLength(Byte lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;  // a continuation byte, or overlong
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF5 ? 4 : 0;
}

// The second byte shows overlong sequences, surrogates and characters above U+10FFFF.
bool isSecondByte(Byte lead, Byte byte) {
  const Byte first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const Byte last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  return byte >= first && byte <= last;
}

bool isContinuation(Byte byte) {
  return (byte & 0xC0) == 0x80;
}

// Returns the length of the first character; 0 if it is not valid.
std::size_t firstCharacterLength(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return static_cast<Byte>(bytes[i]); };
  const std::size_t length = sequenceLength(at(0));
  if (length > bytes.size()) return 0;
  if (length > 1 && !isSecondByte(at(0), at(1))) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (!isContinuation(at(i))) return 0;
  }
  return length;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = firstCharacterLength(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace platform
