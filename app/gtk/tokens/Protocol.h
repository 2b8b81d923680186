// What the window and svo-signin-tokens exchange.

#pragma once

#include <cstddef>

// One certificate: name, issuer, token, expiry in seconds of Unix time, the certificate in PEM, the address of its
// private key, how to log in to the token.
inline constexpr char kCertificateType[] = "(sssxssu)";
inline constexpr char kCertificatesType[] = "a(sssxssu)";

// In bytes.
inline constexpr std::size_t kMaxPin = 255;

// How the user logs in to a token.
enum class Login {
  kNone,    // not at all
  kPin,     // by a PIN
  kReader,  // at the reader's own keys
};

// What came of opening a private key; the exit status of the program. Others mean kGone.
enum class Opening {
  kOpened = 0,
  kGone = 1,  // there is no such key (any more), or the token failed
  kWrongPin = 2,
  kFewTries = 3,  // wrong, and few tries are left
  kFinalTry = 4,  // wrong, and one try is left
  kLocked = 5,
};
