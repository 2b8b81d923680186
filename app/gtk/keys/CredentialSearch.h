// Asks a key without a touch which credentials it has.
//
// - A key hides the credentials that it only uses after it has verified the user.
// - What such a question signs is a hash of zeros, without the user's presence.

#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/gtk/keys/Device.h"
#include "app/gtk/keys/WebAuthn.h"

// Null if libfido2 does not accept the arguments.
FidoAssertion newAssertion(const std::string& rpId, const Bytes& clientDataHash, const std::vector<Bytes>& allowed);

// Returns the first of `ids` that the key has.
std::optional<Bytes> find(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids);

// Returns what of `ids` must be sent with a request: those that the key could have or, if they are too many for one
// message, the one that it has.
std::vector<Bytes> shortened(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids);

// A key may show a credential only to a verified user. Looks for one of `ids` with the PIN, unless there is none or one
// is `found` already. Returns an error of libfido2; that the key has none of them is no error.
int findHidden(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids, const char* pin,
               std::vector<Bytes>& found);
