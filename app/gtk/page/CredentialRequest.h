// The requests of a page for a security key, and the replies to them, as the JSON text that credentials.js exchanges
// with this program.
//
// - The text comes from the page: any bytes are accepted, nothing in it is trusted. A member of a wrong type is
// missing.
// - Sections are those of W3C Web Authentication, Level 2.
// - Binary members are base64url (RFC 4648, section 5) without padding, as in the JSON forms of Level 3.
// Needs no display.

#pragma once

#include <jsc/jsc.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>

#include "app/gtk/keys/WebAuthn.h"

// Longer requests are ignored.
inline constexpr std::size_t kMaxCredentialRequest = 1 << 20;

struct CredentialRequest {
  std::string id;         // chosen by the page; names the request in the reply
  bool isCancel = false;  // cancels the request `id`; the other members are empty
  std::string error;      // the name of the error with which the request fails; empty if it is valid
  Bytes challenge;
  std::chrono::milliseconds timeout{};            // within the ranges of section 5.1.3
  std::optional<std::string> rpId;                // as the page gave it
  std::optional<std::string> appId;               // as the page gave it
  std::variant<Registration, Assertion> options;  // without RP ID, AppID and hash
};

// Decodes and checks what needs no origin. Returns nothing if the text is not a request at all.
std::optional<CredentialRequest> decodeCredentialRequest(JSCContext* context, const std::string& text);

// `error` is the name of a DOMException, or "TypeError".
std::string encodeFailure(const std::string& id, const std::string& error);

std::string encodeRegistration(const std::string& id, const std::string& clientDataJson,
                               const RegistrationResult& result);
// `appIdRequested`: the request had the extension "appid".
std::string encodeAssertion(const std::string& id, const std::string& clientDataJson, const AssertionResult& result,
                            bool appIdRequested);
