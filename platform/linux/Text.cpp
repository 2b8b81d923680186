#include "platform/Text.h"

#include <glib.h>
#include <unistd.h>

#include <array>
#include <cstddef>

#include "platform/linux/Glib.h"

namespace platform {
namespace {

using Uuid = std::array<unsigned char, 16>;

// From the kernel: a generator of the process would return the same numbers in both processes after a fork.
Uuid randomBytes() {
  Uuid bytes{};
  if (::getentropy(bytes.data(), bytes.size()) == 0) return bytes;
  for (unsigned char& byte : bytes)
    byte = static_cast<unsigned char>(g_random_int());  // old kernels
  return bytes;
}

}  // namespace

std::string canonicallyComposed(const char* text) {
  if (!isUtf8(text)) return text;
  const Owned<gchar, g_free> composed(g_utf8_normalize(text, -1, G_NORMALIZE_NFC));
  return composed ? composed.get() : text;
}

std::string randomUuidText() {
  constexpr const char* kDigits = "0123456789ABCDEF";
  Uuid bytes = randomBytes();
  bytes[6] = static_cast<unsigned char>((bytes[6] & 0x0F) | 0x40);  // version 4
  bytes[8] = static_cast<unsigned char>((bytes[8] & 0x3F) | 0x80);  // variant of RFC 9562

  std::string text;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kDigits[bytes[i] >> 4];
    text += kDigits[bytes[i] & 0x0F];
  }
  return text;
}

}  // namespace platform
