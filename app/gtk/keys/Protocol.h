// What the window and svo-signin-keys exchange: lines, each the text of a GVariant.

#pragma once

#include <cstddef>

// To the program. First the request, a variant of one of two types.
//   RP ID, its name; user id, name, display name; hash of the client data; algorithms; excluded credentials;
//   `ResidentKey`; `UserVerification`
inline constexpr char kRegistrationType[] = "(ssayssayaiaayuu)";
//   RP ID, hash of the client data, allowed credentials, `UserVerification`, AppID
inline constexpr char kAssertionType[] = "(sayaayums)";
// Then, for each question, a PIN or the number of an account, as it is. The end of the input ends the ceremony.

// From the program: the name of an event and its value.
inline constexpr char kEventType[] = "(sv)";
inline constexpr char kNeedsKey[] = "needs-key";        // b: without permission
inline constexpr char kNeedsTouch[] = "needs-touch";    // b: of no meaning
inline constexpr char kNeedsPin[] = "needs-pin";        // (ib): tries left or -1, wrong
inline constexpr char kPinBlocked[] = "pin-blocked";    // b: until reinserted
inline constexpr char kHasAccounts[] = "has-accounts";  // a(ss): name, display name
inline constexpr char kRegistered[] = "registered";     // kRegisteredType
inline constexpr char kAsserted[] = "asserted";         // kAssertedType
inline constexpr char kFailed[] = "failed";             // u: `KeyError`

// Credential, authenticator data, public key as libfido2 gives it, algorithm, whether it is resident, transports.
inline constexpr char kRegisteredType[] = "(ayayayibas)";
// Credential, authenticator data, signature, user handle, whether the AppID was used.
inline constexpr char kAssertedType[] = "(ayayayayb)";

// An answer has at most this many bytes.
inline constexpr std::size_t kMaxAnswer = 63;
