#include "app/gtk/keys/Ceremony.h"

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <optional>
#include <thread>

#include "app/gtk/keys/CredentialSearch.h"
#include "app/gtk/keys/ForbiddenKey.h"

namespace {

constexpr std::chrono::milliseconds kPollTime{200};
constexpr int kTouchPollTime = 100;  // milliseconds
constexpr std::size_t kMaxAccounts = 64;

// Longer names are cut, as keys may do (W3C Web Authentication, Level 2, section 6.4.1).
constexpr std::size_t kMaxName = 64;

std::string cut(const std::string& name) {
  if (name.size() <= kMaxName) return name;
  const char* const end = g_utf8_find_prev_char(name.c_str(), name.c_str() + kMaxName + 1);
  return {name.c_str(), end};
}

Bytes bytesOf(const unsigned char* data, std::size_t size) {
  return data == nullptr ? Bytes() : Bytes(data, data + size);
}

// Empty for a name that shows nothing.
std::string nameOf(const char* text) {
  std::string name = validUtf8(orEmpty(text));
  for (const char* at = name.c_str(); *at != '\0'; at = g_utf8_next_char(at)) {
    const gunichar character = g_utf8_get_char(at);
    if (g_unichar_isgraph(character) && !g_unichar_ismark(character)) return name;
  }
  return {};
}

bool isPluggedIn(const Device& key) {
  const std::vector<std::string> paths = Device::list();
  return std::find(paths.begin(), paths.end(), key.path()) != paths.end();
}

// Another program may use one, and one may be no key.
std::vector<std::unique_ptr<Device>> opened(const std::vector<std::string>& paths) {
  std::vector<std::unique_ptr<Device>> keys;
  for (const std::string& each : paths) {
    auto key = std::make_unique<Device>(each);
    if (key->handle() != nullptr) keys.push_back(std::move(key));
  }
  return keys;
}

bool verifiesUser(const KeyInfo& info) {
  return info.hasPin || info.hasBuiltInVerification;
}

// libfido2 gives authenticator data as a byte string of CBOR.
Bytes unwrapped(const Bytes& byteString) {
  if (byteString.empty()) return {};
  const std::size_t head = byteString[0] < 0x58 ? 1 : byteString[0] == 0x58 ? 2 : 3;
  if (byteString.size() < head) return {};
  return {byteString.begin() + static_cast<std::ptrdiff_t>(head), byteString.end()};
}

Credential newCredential(const Registration& request, int algorithm, bool isStored,
                         const std::vector<Bytes>& excluded) {
  Credential credential(fido_cred_new());
  fido_cred_t* const to = credential.get();
  bool isSet = fido_cred_set_type(to, algorithm) == FIDO_OK;
  isSet &= fido_cred_set_rp(to, request.rpId.c_str(), cut(request.rpName).c_str()) == FIDO_OK;
  isSet &= fido_cred_set_user(to, request.userId.data(), request.userId.size(), cut(request.userName).c_str(),
                              cut(request.userDisplayName).c_str(), nullptr) == FIDO_OK;
  isSet &= fido_cred_set_clientdata_hash(to, request.clientDataHash.data(), request.clientDataHash.size()) == FIDO_OK;
  if (isStored) isSet &= fido_cred_set_rk(to, FIDO_OPT_TRUE) == FIDO_OK;
  for (const Bytes& each : excluded)
    isSet &= fido_cred_exclude(to, each.data(), each.size()) == FIDO_OK;
  return isSet ? std::move(credential) : nullptr;
}

}  // namespace

void Ceremony::run(const Registration& request) {
  withKeys([&](const Device& key) { return registerWith(key, request); });
}

void Ceremony::run(const Assertion& request) {
  withKeys([&](const Device& key) { return assertWith(key, request); });
}

void Ceremony::withKeys(const std::function<Step(const Device&)>& use) {
  while (use(*chooseKey()) != Step::kDone)
    std::this_thread::sleep_for(kPollTime);
}

std::unique_ptr<Device> Ceremony::chooseKey() {
  for (;; std::this_thread::sleep_for(kPollTime)) {
    const std::vector<std::string> paths = usableKeys();
    std::vector<std::unique_ptr<Device>> keys = opened(paths);
    // While a key is blocked, the last report says so.
    if (keys.empty() && unusable_.empty()) report_(kNeedsKey, g_variant_new_boolean(hasForbiddenKey()));
    if (keys.empty()) continue;
    std::unique_ptr<Device> key = keys.size() == 1 ? std::move(keys.front()) : touchedOf(std::move(keys), paths);
    if (key) return key;
  }
}

std::vector<std::string> Ceremony::usableKeys() {
  const std::vector<std::string> paths = Device::list();
  std::set<std::string> unusable;
  std::vector<std::string> usable;
  for (const std::string& each : paths) {
    if (unusable_.count(each) == 0) {
      usable.push_back(each);
    } else {
      unusable.insert(each);
    }
  }
  unusable_ = std::move(unusable);
  return usable;
}

// Returns null when another key is plugged in or pulled out, or one does not wait any longer.
std::unique_ptr<Device> Ceremony::touchedOf(std::vector<std::unique_ptr<Device>> keys,
                                            const std::vector<std::string>& paths) {
  const auto doesNotWait = [](const std::unique_ptr<Device>& each) {
    return fido_dev_get_touch_begin(each->handle()) != FIDO_OK;
  };
  keys.erase(std::remove_if(keys.begin(), keys.end(), doesNotWait), keys.end());
  if (keys.empty()) return nullptr;
  report_(kNeedsTouch, g_variant_new_boolean(TRUE));
  std::unique_ptr<Device> touched;
  while (!touched && usableKeys() == paths) {
    for (std::unique_ptr<Device>& each : keys) {
      int isTouched = 0;
      if (fido_dev_get_touch_status(each->handle(), &isTouched, kTouchPollTime) != FIDO_OK) return nullptr;
      if (isTouched == 0) continue;
      touched = std::move(each);
      break;
    }
  }
  return touched;
}

Ceremony::Step Ceremony::registerWith(const Device& key, const Registration& request) {
  const KeyInfo& info = key.info();
  const auto isKnown = [&info](int algorithm) {
    return std::find(info.algorithms.begin(), info.algorithms.end(), algorithm) != info.algorithms.end();
  };
  const auto algorithm = std::find_if(request.algorithms.begin(), request.algorithms.end(), isKnown);
  if (algorithm == request.algorithms.end()) return failAfterTouch(key, KeyError::kNotSupported);
  const bool canStore = info.storesCredentials || request.residentKey != ResidentKey::kRequired;
  const bool canVerify = verifiesUser(info) || request.userVerification != UserVerification::kRequired;
  if (!canStore || !canVerify) return failAfterTouch(key, KeyError::kConstraint);

  bool isStored = info.storesCredentials && request.residentKey != ResidentKey::kDiscouraged;
  std::vector<Bytes> excluded = shortened(key, request.rpId, request.excluded);
  Credential credential;
  const auto make = [&](const char* pin, fido_opt_t builtIn) {
    credential = newCredential(request, *algorithm, isStored, excluded);
    if (!credential || fido_cred_set_uv(credential.get(), builtIn) != FIDO_OK) return FIDO_ERR_INTERNAL;
    return fido_dev_make_cred(key.handle(), credential.get(), pin);
  };
  const int error = attemptVerified(key, request.userVerification, [&](const char* pin, fido_opt_t builtIn) {
    const int searchError = findHidden(key, request.rpId, request.excluded, pin, excluded);
    if (searchError != FIDO_OK) return searchError;
    const int firstError = make(pin, builtIn);
    const bool isFull = isStored && firstError == FIDO_ERR_KEY_STORE_FULL;
    if (!isFull || request.residentKey == ResidentKey::kRequired) return firstError;
    isStored = false;
    return make(pin, builtIn);
  });
  if (error != FIDO_OK) return outcomeOf(key, error);

  const fido_cred_t* const made = credential.get();
  GVariantBuilder transports;
  g_variant_builder_init(&transports, G_VARIANT_TYPE("as"));
  for (const std::string& each : info.transports)
    g_variant_builder_add(&transports, "s", each.c_str());
  report_(kRegistered,
          g_variant_new("(@ay@ay@ayibas)", variantOf(bytesOf(fido_cred_id_ptr(made), fido_cred_id_len(made))),
                        variantOf(bytesOf(fido_cred_authdata_raw_ptr(made), fido_cred_authdata_raw_len(made))),
                        variantOf(bytesOf(fido_cred_pubkey_ptr(made), fido_cred_pubkey_len(made))), *algorithm,
                        isStored ? TRUE : FALSE, &transports));
  return Step::kDone;
}

Ceremony::Step Ceremony::assertWith(const Device& key, const Assertion& request) {
  const KeyInfo& info = key.info();
  const bool canVerify = verifiesUser(info) || request.userVerification != UserVerification::kRequired;
  if (!canVerify || (!info.isCtap2 && request.allowed.empty())) return failAfterTouch(key, KeyError::kNotAllowed);

  std::vector<Bytes> allowed = request.allowed;
  bool usedAppId = false;
  if (request.appId && !find(key, request.rpId, allowed)) {
    const std::optional<Bytes> found = find(key, *request.appId, allowed);
    usedAppId = found.has_value();
    if (usedAppId) allowed = {*found};
  }
  const std::string& relyingParty = usedAppId ? *request.appId : request.rpId;
  allowed = shortened(key, relyingParty, allowed);

  FidoAssertion assertion;
  const int error = attemptVerified(key, request.userVerification, [&](const char* pin, fido_opt_t builtIn) {
    const int searchError = findHidden(key, relyingParty, request.allowed, pin, allowed);
    if (searchError != FIDO_OK) return searchError;
    // Without a list a key offers every credential of the relying party.
    if (allowed.empty() && !request.allowed.empty()) return FIDO_ERR_NO_CREDENTIALS;
    assertion = newAssertion(relyingParty, request.clientDataHash, allowed);
    if (!assertion || fido_assert_set_uv(assertion.get(), builtIn) != FIDO_OK) return FIDO_ERR_INTERNAL;
    return fido_dev_get_assert(key.handle(), assertion.get(), pin);
  });
  if (error != FIDO_OK) return outcomeOf(key, error);
  return finish(key, assertion.get(), allowed.size() == 1 ? allowed.front() : Bytes(), usedAppId);
}

// A key may leave out the credential if only one was allowed.
Ceremony::Step Ceremony::finish(const Device& key, const fido_assert_t* assertion, const Bytes& onlyAllowed,
                                bool usedAppId) {
  std::size_t chosen = 0;
  if (chooseAccount(key, assertion, chosen) != Step::kDone) return Step::kOtherKey;
  if (chosen >= fido_assert_count(assertion)) return fail(KeyError::kNotAllowed);

  Bytes id = bytesOf(fido_assert_id_ptr(assertion, chosen), fido_assert_id_len(assertion, chosen));
  if (id.empty()) id = onlyAllowed;
  const Bytes data =
      unwrapped(bytesOf(fido_assert_authdata_ptr(assertion, chosen), fido_assert_authdata_len(assertion, chosen)));
  const Bytes signature = bytesOf(fido_assert_sig_ptr(assertion, chosen), fido_assert_sig_len(assertion, chosen));
  const Bytes user = bytesOf(fido_assert_user_id_ptr(assertion, chosen), fido_assert_user_id_len(assertion, chosen));
  report_(kAsserted, g_variant_new("(@ay@ay@ay@ayb)", variantOf(id), variantOf(data), variantOf(signature),
                                   variantOf(user), usedAppId ? TRUE : FALSE));
  return Step::kDone;
}

// A key names its accounts only if it has verified the user; without names the user cannot choose, and gets the newest.
Ceremony::Step Ceremony::chooseAccount(const Device& key, const fido_assert_t* assertion, std::size_t& chosen) {
  const std::size_t count = std::min(fido_assert_count(assertion), kMaxAccounts);
  if (count < 2) return Step::kDone;
  GVariantBuilder accounts;
  g_variant_builder_init(&accounts, G_VARIANT_TYPE("a(ss)"));
  bool areNamed = true;
  for (std::size_t i = 0; i < count; ++i) {
    const std::string name = nameOf(fido_assert_user_name(assertion, i));
    const std::string displayName = nameOf(fido_assert_user_display_name(assertion, i));
    areNamed = areNamed && !(name.empty() && displayName.empty());
    g_variant_builder_add(&accounts, "(ss)", name.c_str(), displayName.c_str());
  }
  const Variant list(g_variant_ref_sink(g_variant_builder_end(&accounts)));
  if (!areNamed) return Step::kDone;
  report_(kHasAccounts, g_variant_new("(u@a(ss))", answers_.ask(), list.get()));
  Answer answer;
  if (!waitForAnswer(key, answer)) return Step::kOtherKey;
  chosen = std::strtoul(answer.text(), nullptr, 10);
  return Step::kDone;
}

int Ceremony::attemptVerified(const Device& key, UserVerification wanted, const Attempt& attempt) {
  const KeyInfo& info = key.info();
  bool isBuiltIn = info.hasBuiltInVerification && wanted != UserVerification::kDiscouraged;
  bool isByPin = !isBuiltIn && info.hasPin && wanted != UserVerification::kDiscouraged;
  bool wasWrong = false;
  Answer pin;
  for (;;) {
    while (isByPin && pin.isEmpty()) {
      const int error = askPin(key, wasWrong, pin);
      if (error != FIDO_OK) return error;
    }
    report_(kNeedsTouch, g_variant_new_boolean(TRUE));
    const int error = attempt(isByPin ? pin.text() : nullptr, isBuiltIn ? FIDO_OPT_TRUE : FIDO_OPT_OMIT);
    switch (error) {
      case FIDO_ERR_USER_ACTION_TIMEOUT:  // of the key: the ceremony has its own
      case FIDO_ERR_ACTION_TIMEOUT:
      case FIDO_ERR_UV_INVALID:  // a finger that does not match
        break;
      case FIDO_ERR_PIN_REQUIRED:  // also where verification is discouraged
        if (isBuiltIn || isByPin || !verifiesUser(info)) return error;
        isBuiltIn = info.hasBuiltInVerification;
        isByPin = !isBuiltIn;
        break;
      case FIDO_ERR_UV_BLOCKED:
        if (!isBuiltIn || !info.hasPin) return error;
        isBuiltIn = false;
        isByPin = true;
        break;
      case FIDO_ERR_PIN_INVALID:
        if (!isByPin) return error;
        wasWrong = true;
        pin.clear();
        break;
      default:
        return error;
    }
  }
}

int Ceremony::askPin(const Device& key, bool wasWrong, Answer& pin) {
  int triesLeft = -1;
  if (fido_dev_get_retry_count(key.handle(), &triesLeft) != FIDO_OK) triesLeft = -1;
  if (triesLeft == 0) return FIDO_ERR_PIN_BLOCKED;
  report_(kNeedsPin, g_variant_new("(uib)", answers_.ask(), triesLeft, wasWrong ? TRUE : FALSE));
  return waitForAnswer(key, pin) ? FIDO_OK : FIDO_ERR_RX;
}

// Returns false if the key has been pulled out.
bool Ceremony::waitForAnswer(const Device& key, Answer& to) {
  while (!answers_.wait(kPollTime, to)) {
    if (!isPluggedIn(key)) return false;
  }
  return true;
}

Ceremony::Step Ceremony::fail(KeyError error) {
  report_(kFailed, g_variant_new_uint32(static_cast<guint32>(error)));
  return Step::kDone;
}

Ceremony::Step Ceremony::failAfterTouch(const Device& key, KeyError error) {
  report_(kNeedsTouch, g_variant_new_boolean(TRUE));
  if (fido_dev_get_touch_begin(key.handle()) != FIDO_OK) return Step::kOtherKey;
  int isTouched = 0;
  while (isTouched == 0) {
    if (!isPluggedIn(key)) return Step::kOtherKey;
    if (fido_dev_get_touch_status(key.handle(), &isTouched, kTouchPollTime) != FIDO_OK) return Step::kOtherKey;
  }
  return fail(error);
}

Ceremony::Step Ceremony::blocked(const Device& key, bool untilReinserted) {
  unusable_.insert(key.path());
  report_(kPinBlocked, g_variant_new_boolean(untilReinserted));
  return Step::kOtherKey;
}

Ceremony::Step Ceremony::outcomeOf(const Device& key, int error) {
  switch (error) {
    case FIDO_ERR_TX:  // pulled out
    case FIDO_ERR_RX:
      return Step::kOtherKey;
    case FIDO_ERR_PIN_AUTH_BLOCKED:
      return blocked(key, true);
    case FIDO_ERR_PIN_BLOCKED:
      return blocked(key, false);
    case FIDO_ERR_CREDENTIAL_EXCLUDED:  // after a touch
      return fail(KeyError::kInvalidState);
    case FIDO_ERR_OPERATION_DENIED:  // by the user
      return fail(KeyError::kNotAllowed);
    case FIDO_ERR_KEY_STORE_FULL:
    case FIDO_ERR_UNSUPPORTED_OPTION:
      return failAfterTouch(key, KeyError::kConstraint);
    case FIDO_ERR_UNSUPPORTED_ALGORITHM:
      return failAfterTouch(key, KeyError::kNotSupported);
    default:
      return failAfterTouch(key, KeyError::kNotAllowed);
  }
}
