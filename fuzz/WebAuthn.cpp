// Checks what is made of a page's request for a security key, of a host, and of the bytes of a key.

#include <jsc/jsc.h>

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "app/gtk/Glib.h"
#include "app/gtk/keys/WebAuthn.h"
#include "app/gtk/page/CredentialRequest.h"
#include "fuzz/Fuzzing.h"

namespace {

constexpr std::size_t kMaxList = 64;
constexpr std::size_t kMaxCredentialId = 1023;
constexpr std::size_t kMaxUserId = 64;

void checkList(const std::vector<Bytes>& ids) {
  REQUIRE(ids.size() <= kMaxList);
  for (const Bytes& each : ids)
    REQUIRE(!each.empty() && each.size() <= kMaxCredentialId);
}

void checkOptions(const Registration& options) {
  checkList(options.excluded);
  REQUIRE(!options.userId.empty() && options.userId.size() <= kMaxUserId);
  REQUIRE(!options.algorithms.empty());
  for (const int each : options.algorithms)
    REQUIRE(each == kEs256 || each == kEdDsa || each == kRs256);
  for (const std::string* const each : {&options.rpName, &options.userName, &options.userDisplayName})
    REQUIRE(g_utf8_validate(each->data(), static_cast<gssize>(each->size()), nullptr));
}

void checkOptions(const Assertion& options) {
  checkList(options.allowed);
}

void checkRequest(const std::string& text) {
  static const Owned<JSCContext> context(jsc_context_new());
  const std::optional<CredentialRequest> request = decodeCredentialRequest(context.get(), text);
  if (!request || request->isCancel || !request->error.empty()) return;
  REQUIRE(request->timeout >= std::chrono::seconds(30) && request->timeout <= std::chrono::minutes(10));
  std::visit([](const auto& options) { checkOptions(options); }, request->options);
}

void checkHost(const std::string& host, const std::string& rpId) {
  if (!mayUse(host, rpId)) return;
  const bool isSuffix =
      host.size() > rpId.size() && host.compare(host.size() - rpId.size() - 1, std::string::npos, "." + rpId) == 0;
  REQUIRE(rpId == host || isSuffix);
  REQUIRE(rpId.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-_.") == std::string::npos);
}

void checkKeyData(const Bytes& data) {
  const Bytes cleared = withoutAaguid(data);
  REQUIRE(cleared.size() == data.size());
  const Bytes object = attestationObject(data);
  REQUIRE(object.size() >= data.size() && std::equal(data.rbegin(), data.rend(), object.rbegin()));
  REQUIRE(fromBase64Url(toBase64Url(data)) == data);
  for (const int algorithm : {kEs256, kEdDsa, kRs256})
    (void)publicKeyDer(algorithm, data);
  const Bytes hash(data.begin(), data.begin() + static_cast<std::ptrdiff_t>(std::min<std::size_t>(data.size(), 32)));
  const bool isData = isFor(hash, UserVerification::kPreferred, data);
  REQUIRE(isData == (data.size() >= 37 && (data[32] & 1) != 0));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  checkRequest(fuzz::textOf(data, size));
  const auto [host, rpId] = fuzz::twoTextsOf(data, size);
  checkHost(host, rpId);
  checkKeyData(Bytes(data, data + size));
  return 0;
}
