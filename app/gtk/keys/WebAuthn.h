// The parts of W3C Web Authentication, Level 2, that concern neither a page nor a device: which relying party a host
// may name, the client data, and the forms of keys and attestations.
//
// - Section numbers are those of the standard.
// - Plain C++, pure. Bytes that come from a device may be of any form.

#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

using Bytes = std::vector<std::uint8_t>;

enum class UserVerification { kRequired, kPreferred, kDiscouraged };
enum class ResidentKey { kRequired, kPreferred, kDiscouraged };

// COSE algorithm identifiers (RFC 9053, RFC 8812).
inline constexpr int kEs256 = -7;
inline constexpr int kEdDsa = -8;
inline constexpr int kRs256 = -257;

// Options for `navigator.credentials.create` (section 5.4) after the rules for the origin have been applied.
struct Registration {
  std::string rpId;
  std::string rpName;
  Bytes userId;
  std::string userName;
  std::string userDisplayName;
  Bytes clientDataHash;
  std::vector<int> algorithms;  // in the page's order
  std::vector<Bytes> excluded;
  ResidentKey residentKey = ResidentKey::kDiscouraged;
  UserVerification userVerification = UserVerification::kPreferred;
  bool credProps = false;
};

// Options for `navigator.credentials.get` (section 5.5), likewise.
struct Assertion {
  std::string rpId;
  Bytes clientDataHash;
  std::vector<Bytes> allowed;
  UserVerification userVerification = UserVerification::kPreferred;
  std::optional<std::string> appId;
};

struct RegistrationResult {
  Bytes credentialId;
  Bytes attestationObject;
  Bytes authenticatorData;
  Bytes publicKeyDer;  // SubjectPublicKeyInfo (RFC 5280)
  int algorithm = 0;
  std::optional<bool> residentKey;  // for the extension "credProps"
  std::vector<std::string> transports;
};

struct AssertionResult {
  Bytes credentialId;
  Bytes authenticatorData;
  Bytes signature;
  Bytes userHandle;
  bool usedAppId = false;
};

// Whether a page of `host` may name `rpId` as its relying party: the host itself, or a suffix of it that contains the
// host's registrable domain by the public suffix list. Both in the form of a URL: ASCII, lower case.
//   "login.a.example", "a.example"        => true
//   "login.a.example", "example"          => false
//   "a.example", "login.a.example"        => false
//   "b.github.io", "github.io"            => false
//   "localhost", "localhost"              => true
//   "127.0.0.1", "127.0.0.1"              => false
bool mayUse(const std::string& host, const std::string& rpId);

// Serializes client data (section 5.8.1.1).
//   "webauthn.get", {1, 2, 3}, "https://a.example"
//     => {"type":"webauthn.get","challenge":"AQID","origin":"https://a.example","crossOrigin":false}
std::string clientDataJson(const std::string& type, const Bytes& challenge, const std::string& origin);

Bytes sha256(const std::string& text);

// Whether authenticator data (section 6.1) are for the RP ID or AppID with this hash, and say that the user was present
// and, where `userVerification` requires it, verified.
bool isFor(const Bytes& rpIdHash, UserVerification userVerification, const Bytes& authenticatorData);

// Replaces the AAGUID of authenticator data (section 6.1) by zeros, as for attestation "none" (section 5.1.3, step 21).
// Data without attested credential data are returned unchanged.
Bytes withoutAaguid(Bytes authenticatorData);

// An attestation object with the format "none" (sections 6.5.4, 8.7).
Bytes attestationObject(const Bytes& authenticatorData);

// Returns the SubjectPublicKeyInfo of a key; nothing if it has another length or algorithm.
//
// - ES256: the coordinates x and y, 64 bytes. EdDSA: 32 bytes. RS256: 256 bytes of modulus, 3 of exponent.
std::optional<Bytes> publicKeyDer(int algorithm, const Bytes& key);

// Base64url (RFC 4648, section 5) without padding.
std::string toBase64Url(const Bytes& bytes);
std::optional<Bytes> fromBase64Url(const std::string& text);
