#include "platform/Text.h"

#include <cstddef>

namespace platform {
namespace {

using Byte = unsigned char;

std::size_t lengthAfter(Byte lead) {
  if (lead < 0x80) return 1;
  if (lead < 0xC2) return 0;  // inside a character, or overlong
  if (lead < 0xE0) return 2;
  if (lead < 0xF0) return 3;
  return lead < 0xF5 ? 4 : 0;
}

// Whatever is overlong, a surrogate or too high shows in the second byte at the latest.
bool isSecond(Byte lead, Byte byte) {
  const Byte first = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  const Byte last = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  return byte >= first && byte <= last;
}

bool isTail(Byte byte) {
  return (byte & 0xC0) == 0x80;
}

// The length of the character that the bytes begin with; 0 when they begin with none.
std::size_t lengthOfFirst(std::string_view bytes) {
  const auto at = [&](std::size_t i) { return static_cast<Byte>(bytes[i]); };
  const std::size_t length = lengthAfter(at(0));
  if (length > bytes.size()) return 0;
  if (length > 1 && !isSecond(at(0), at(1))) return 0;
  for (std::size_t i = 2; i < length; ++i) {
    if (!isTail(at(i))) return 0;
  }
  return length;
}

}  // namespace

bool isUtf8(std::string_view bytes) {
  while (!bytes.empty()) {
    const std::size_t length = lengthOfFirst(bytes);
    if (length == 0) return false;
    bytes.remove_prefix(length);
  }
  return true;
}

}  // namespace platform
