// What the window and svo-signin-keys exchange: lines, each the text of a GVariant.

#pragma once

#include <glib.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "app/gtk/Glib.h"
#include "app/gtk/keys/WebAuthn.h"

// In bytes of UTF-8 (CTAP 2.1, section 6.5.1). A PIN contains no line break.
inline constexpr std::size_t kMaxKeyPin = 63;

enum class KeyError {
  kNotAllowed,    // no key has a credential, the user refused at the key, or the time is over
  kInvalidState,  // the key has one of the excluded credentials
  kConstraint,    // the key cannot store a credential or verify the user, as required
  kNotSupported,  // the key has none of the algorithms
};

// To the program. First the request, a variant of one of two types.
//   RP ID, its name; user id, name, display name; hash of the client data; algorithms; excluded credentials;
//   `ResidentKey`; `UserVerification`
inline constexpr char kRegistrationType[] = "(ssayssayaiaayuu)";
//   RP ID, hash of the client data, allowed credentials, `UserVerification`, AppID
inline constexpr char kAssertionType[] = "(sayaayums)";
// Then, for each question, not as a GVariant: its number, a space, and a PIN or the index of an account. The end of the
// input ends the ceremony.

// From the program: the name of an event and its value.
inline constexpr char kEventType[] = "(sv)";
inline constexpr char kNeedsKey[] = "needs-key";        // b: without permission
inline constexpr char kNeedsTouch[] = "needs-touch";    // b: of no meaning
inline constexpr char kNeedsPin[] = "needs-pin";        // (uib): question, tries left or -1, wrong
inline constexpr char kPinBlocked[] = "pin-blocked";    // b: until reinserted
inline constexpr char kHasAccounts[] = "has-accounts";  // (ua(ss)): question; name and display name of each
inline constexpr char kRegistered[] = "registered";     // kRegisteredType
inline constexpr char kAsserted[] = "asserted";         // kAssertedType
inline constexpr char kFailed[] = "failed";             // u: `KeyError`

// Credential, authenticator data, public key as libfido2 gives it, algorithm, whether it is resident, transports.
inline constexpr char kRegisteredType[] = "(ayayayibas)";
// Credential, authenticator data, signature, user handle, whether the AppID was used.
inline constexpr char kAssertedType[] = "(ayayayayb)";

using Variant = Owned<GVariant, g_variant_unref>;

// The result is a floating reference.
inline GVariant* variantOf(const Bytes& bytes) {
  return g_variant_new_fixed_array(G_VARIANT_TYPE_BYTE, bytes.data(), bytes.size(), 1);
}

// The array of bytes at `index` of a tuple.
inline Bytes bytesIn(GVariant* tuple, gsize index) {
  const Variant bytes(g_variant_get_child_value(tuple, index));
  gsize size = 0;
  const auto* const data = static_cast<const std::uint8_t*>(g_variant_get_fixed_array(bytes.get(), &size, 1));
  return {data, data + size};
}
