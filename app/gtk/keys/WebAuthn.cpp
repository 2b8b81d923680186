#include "app/gtk/keys/WebAuthn.h"

#include <libpsl.h>

#include <algorithm>
#include <initializer_list>
#include <memory>
#include <string_view>

#include "app/gtk/Glib.h"

namespace {

constexpr std::size_t kMaxHost = 253;
constexpr std::size_t kFlags = 32;   // offset in authenticator data, after the hash of the RP ID
constexpr std::size_t kAaguid = 37;  // after flags and counter
constexpr std::size_t kAaguidSize = 16;
constexpr std::uint8_t kHasCredential = 0x40;  // flag AT
constexpr std::uint8_t kUserPresent = 0x01;
constexpr std::uint8_t kUserVerified = 0x04;

constexpr std::string_view kDigits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_";

// The URL Standard (section 3.5) reads a host as an address if its last label is a number: decimal, or hexadecimal.
bool endsInANumber(const std::string& host) {
  const std::string last = host.substr(host.rfind('.') + 1);  // all of it if there is no dot
  const bool isHexadecimal = last.rfind("0x", 0) == 0;
  return last.find_first_not_of("0123456789abcdef", isHexadecimal ? 2 : 0, isHexadecimal ? 16 : 10) ==
         std::string::npos;
}

// Names that cannot be an address.
bool isDomain(const std::string& host) {
  if (host.empty() || host.size() > kMaxHost || host.front() == '.' || host.back() == '.') return false;
  if (host.find("..") != std::string::npos) return false;
  const auto isPlain = [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == '.';
  };
  return std::all_of(host.begin(), host.end(), isPlain) && !endsInANumber(host);
}

const psl_ctx_t* publicSuffixes() {
  static const std::unique_ptr<psl_ctx_t, void (*)(psl_ctx_t*)> list(psl_latest(nullptr), psl_free);
  return list.get();
}

bool endsWithLabel(const std::string& host, const std::string& suffix) {
  return host.size() > suffix.size() && host[host.size() - suffix.size() - 1] == '.' &&
         host.compare(host.size() - suffix.size(), suffix.size(), suffix) == 0;
}

// CCDToString of section 5.8.1.2, for ASCII.
std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + '"';
}

Bytes joined(std::initializer_list<Bytes> parts) {
  Bytes all;
  for (const Bytes& each : parts)
    all.insert(all.end(), each.begin(), each.end());
  return all;
}

// The head of a CBOR byte string (RFC 8949, section 3).
Bytes byteStringHead(std::size_t size) {
  const auto low = static_cast<std::uint8_t>(size);
  if (size < 24) return {static_cast<std::uint8_t>(0x40 | size)};
  if (size < 0x100) return {0x58, low};
  return {0x59, static_cast<std::uint8_t>(size >> 8), low};
}

// An element of DER (ITU-T X.690) with at most 65535 bytes.
Bytes element(std::uint8_t tag, const Bytes& content) {
  const auto low = static_cast<std::uint8_t>(content.size());
  if (content.size() < 0x80) return joined({{tag, low}, content});
  if (content.size() < 0x100) return joined({{tag, 0x81, low}, content});
  return joined({{tag, 0x82, static_cast<std::uint8_t>(content.size() >> 8), low}, content});
}

// A positive number without leading zeros. A leading bit that is set would be a sign.
Bytes integer(const std::uint8_t* begin, const std::uint8_t* end) {
  begin = std::find_if(begin, end - 1, [](std::uint8_t each) { return each != 0; });
  return element(0x02, joined({Bytes(*begin >= 0x80 ? 1 : 0), Bytes(begin, end)}));
}

Bytes publicKeyInfo(const Bytes& algorithm, const Bytes& key) {
  return element(0x30, joined({element(0x30, algorithm), element(0x03, joined({{0}, key}))}));
}

}  // namespace

bool mayUse(const std::string& host, const std::string& rpId) {
  if (!isDomain(host) || !isDomain(rpId) || publicSuffixes() == nullptr) return false;
  if (psl_is_public_suffix2(publicSuffixes(), rpId.c_str(), PSL_TYPE_ANY | PSL_TYPE_NO_STAR_RULE)) return false;
  if (rpId == host) return true;
  const char* const registrable = psl_registrable_domain(publicSuffixes(), host.c_str());
  if (registrable == nullptr || !endsWithLabel(host, rpId)) return false;
  return rpId == registrable || endsWithLabel(rpId, registrable);
}

std::string clientDataJson(const std::string& type, const Bytes& challenge, const std::string& origin) {
  return "{\"type\":" + quoted(type) + ",\"challenge\":" + quoted(toBase64Url(challenge)) +
         ",\"origin\":" + quoted(origin) + ",\"crossOrigin\":false}";
}

Bytes sha256(const std::string& text) {
  const Owned<GChecksum, g_checksum_free> checksum(g_checksum_new(G_CHECKSUM_SHA256));
  g_checksum_update(checksum.get(), reinterpret_cast<const guchar*>(text.data()), static_cast<gssize>(text.size()));
  Bytes hash(32);
  gsize size = hash.size();
  g_checksum_get_digest(checksum.get(), hash.data(), &size);
  return hash;
}

bool isFor(const Bytes& rpIdHash, UserVerification userVerification, const Bytes& authenticatorData) {
  if (authenticatorData.size() < kAaguid) return false;
  if (!std::equal(rpIdHash.begin(), rpIdHash.end(), authenticatorData.begin(), authenticatorData.begin() + kFlags))
    return false;
  const unsigned needed = userVerification == UserVerification::kRequired ? kUserPresent | kUserVerified : kUserPresent;
  return (authenticatorData[kFlags] & needed) == needed;
}

Bytes withoutAaguid(Bytes authenticatorData) {
  const bool hasOne =
      authenticatorData.size() >= kAaguid + kAaguidSize && (authenticatorData[kFlags] & kHasCredential) != 0;
  if (hasOne) std::fill_n(authenticatorData.begin() + kAaguid, kAaguidSize, std::uint8_t{0});
  return authenticatorData;
}

Bytes attestationObject(const Bytes& authenticatorData) {
  // A map of three. Each text follows its head.
  const Bytes beginning{0xa3, 0x63, 'f', 'm', 't',  0x64, 'n', 'o', 'n', 'e', 0x67, 'a', 't', 't',
                        'S',  't',  'm', 't', 0xa0, 0x68, 'a', 'u', 't', 'h', 'D',  'a', 't', 'a'};
  return joined({beginning, byteStringHead(authenticatorData.size()), authenticatorData});
}

std::optional<Bytes> publicKeyDer(int algorithm, const Bytes& key) {
  if (algorithm == kEs256 && key.size() == 64) {
    return publicKeyInfo({0x06, 0x07, 0x2a, 0x86, 0x48, 0xce, 0x3d, 0x02, 0x01,         // ecPublicKey
                          0x06, 0x08, 0x2a, 0x86, 0x48, 0xce, 0x3d, 0x03, 0x01, 0x07},  // P-256
                         joined({{4}, key}));  // a point that is not compressed
  }
  if (algorithm == kEdDsa && key.size() == 32) return publicKeyInfo({0x06, 0x03, 0x2b, 0x65, 0x70}, key);  // Ed25519
  if (algorithm == kRs256 && key.size() == 259) {
    const std::uint8_t* const exponent = key.data() + 256;
    const Bytes numbers = element(0x30, joined({integer(key.data(), exponent), integer(exponent, exponent + 3)}));
    return publicKeyInfo({0x06, 0x09, 0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x01, 0x01, 0x01, 0x05, 0x00}, numbers);
  }
  return std::nullopt;
}

std::string toBase64Url(const Bytes& bytes) {
  std::string text;
  unsigned bits = 0;
  int count = 0;
  for (const std::uint8_t each : bytes) {
    bits = bits << 8 | each;
    for (count += 8; count >= 6; count -= 6)
      text += kDigits[bits >> (count - 6) & 63];
  }
  if (count > 0) text += kDigits[bits << (6 - count) & 63];
  return text;
}

std::optional<Bytes> fromBase64Url(const std::string& text) {
  if (text.size() % 4 == 1) return std::nullopt;
  Bytes bytes;
  bytes.reserve(text.size() * 3 / 4);
  unsigned bits = 0;
  int count = 0;
  for (const char each : text) {
    const std::size_t digit = kDigits.find(each);
    if (digit == std::string_view::npos) return std::nullopt;
    bits = bits << 6 | static_cast<unsigned>(digit);
    count += 6;
    if (count < 8) continue;
    count -= 8;
    bytes.push_back(static_cast<std::uint8_t>(bits >> count));
  }
  return bytes;
}
