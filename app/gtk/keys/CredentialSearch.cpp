#include "app/gtk/keys/CredentialSearch.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace {

// In bytes; a key need not accept a message above 1024 (CTAP 2.1, section 6.4).
constexpr std::size_t kMaxList = 512;

std::size_t sizeOf(const std::vector<Bytes>& ids) {
  std::size_t size = 0;
  for (const Bytes& each : ids)
    size += each.size();
  return size;
}

bool fits(const KeyInfo& info, const std::vector<Bytes>& ids) {
  if (ids.size() < 2) return true;
  return sizeOf(ids) <= kMaxList && (info.maxCredentials == 0 || ids.size() <= info.maxCredentials);
}

std::vector<Bytes> possible(const KeyInfo& info, std::vector<Bytes> ids) {
  const auto isTooLong = [&info](const Bytes& id) {
    return info.maxCredentialId != 0 && id.size() > info.maxCredentialId;
  };
  ids.erase(std::remove_if(ids.begin(), ids.end(), isTooLong), ids.end());
  return ids;
}

// Returns an error of libfido2, also if the key has none of the credentials.
int findInBatch(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids, const char* pin,
                Bytes& found) {
  const FidoAssertion question = newAssertion(rpId, Bytes(32), ids);
  if (!question || fido_assert_set_up(question.get(), FIDO_OPT_FALSE) != FIDO_OK) return FIDO_ERR_INTERNAL;
  const int error = fido_dev_get_assert(key.handle(), question.get(), pin);
  // U2F says only that it has one of them, and asks for a touch.
  const bool isFound = error == FIDO_OK || error == FIDO_ERR_USER_PRESENCE_REQUIRED;
  if (!isFound) return error;
  const unsigned char* const id =
      fido_assert_count(question.get()) == 0 ? nullptr : fido_assert_id_ptr(question.get(), 0);
  if (ids.size() > 1 && id == nullptr) return FIDO_ERR_NO_CREDENTIALS;
  found = ids.size() == 1 ? ids.front() : Bytes(id, id + fido_assert_id_len(question.get(), 0));
  return FIDO_OK;
}

// With a PIN every error but "none of them" ends the search: it may be that of a wrong PIN, which costs a try.
int find(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids, const char* pin, Bytes& found) {
  const auto mayGoOn = [pin](int error) {
    return error != FIDO_OK && (pin == nullptr || error == FIDO_ERR_NO_CREDENTIALS);
  };
  std::vector<Bytes> batch;
  for (const Bytes& each : possible(key.info(), ids)) {
    batch.push_back(each);
    // U2F does not say which one of several.
    const bool isFull = !fits(key.info(), batch) || (!key.info().isCtap2 && batch.size() > 1);
    if (!isFull) continue;
    batch.pop_back();
    const int error = findInBatch(key, rpId, batch, pin, found);
    if (!mayGoOn(error)) return error;
    batch = {each};
  }
  return batch.empty() ? FIDO_ERR_NO_CREDENTIALS : findInBatch(key, rpId, batch, pin, found);
}

}  // namespace

FidoAssertion newAssertion(const std::string& rpId, const Bytes& clientDataHash, const std::vector<Bytes>& allowed) {
  FidoAssertion assertion(fido_assert_new());
  fido_assert_t* const to = assertion.get();
  bool isSet = fido_assert_set_rp(to, rpId.c_str()) == FIDO_OK;
  isSet &= fido_assert_set_clientdata_hash(to, clientDataHash.data(), clientDataHash.size()) == FIDO_OK;
  for (const Bytes& each : allowed)
    isSet &= fido_assert_allow_cred(to, each.data(), each.size()) == FIDO_OK;
  return isSet ? std::move(assertion) : nullptr;
}

std::optional<Bytes> find(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids) {
  Bytes found;
  if (find(key, rpId, ids, nullptr, found) != FIDO_OK) return std::nullopt;
  return found;
}

std::vector<Bytes> shortened(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids) {
  std::vector<Bytes> all = possible(key.info(), ids);
  if (!key.info().isCtap2 || fits(key.info(), all)) return all;
  const std::optional<Bytes> found = find(key, rpId, all);
  return found ? std::vector<Bytes>{*found} : std::vector<Bytes>();
}

int findHidden(const Device& key, const std::string& rpId, const std::vector<Bytes>& ids, const char* pin,
               std::vector<Bytes>& found) {
  if (!found.empty() || ids.empty() || pin == nullptr) return FIDO_OK;
  Bytes one;
  const int error = find(key, rpId, ids, pin, one);
  if (error == FIDO_OK) found = {one};
  return error == FIDO_ERR_NO_CREDENTIALS ? FIDO_OK : error;
}
