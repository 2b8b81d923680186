#include "app/gtk/page/CredentialRequest.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <utility>
#include <vector>

#include "app/gtk/Glib.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::minutes;
using std::chrono::seconds;

constexpr std::size_t kMaxId = 64;              // characters of a request's id
constexpr std::size_t kMaxUserId = 64;          // section 5.4.3
constexpr std::size_t kMaxCredentialId = 1023;  // section 4, "credential ID"
constexpr unsigned kMaxCredentials = 64;
constexpr int kAlgorithms[] = {kEs256, kEdDsa, kRs256};

// A value that is plain data, made from JSON. Missing members of anything are undefined.
class Json {
 public:
  explicit Json(JSCValue* value) : value_(value) {}

  Json operator[](const char* name) const {
    if (!jsc_value_is_object(value_.get())) return Json(jsc_value_new_undefined(context()));
    return Json(jsc_value_object_get_property(value_.get(), name));
  }

  bool isMissing() const { return jsc_value_is_undefined(value_.get()); }
  bool isTrue() const { return jsc_value_is_boolean(value_.get()) && jsc_value_to_boolean(value_.get()); }

  std::optional<std::string> text() const {
    if (!jsc_value_is_string(value_.get())) return std::nullopt;
    const Owned<GBytes, g_bytes_unref> bytes(jsc_value_to_string_as_bytes(value_.get()));
    gsize size = 0;
    const void* const data = g_bytes_get_data(bytes.get(), &size);
    return validUtf8(std::string(static_cast<const char*>(data), size));
  }

  std::optional<double> number() const {
    if (!jsc_value_is_number(value_.get())) return std::nullopt;
    const double number = jsc_value_to_double(value_.get());
    return std::isfinite(number) ? std::optional(number) : std::nullopt;
  }

  std::optional<Bytes> bytes() const {
    const std::optional<std::string> encoded = text();
    return encoded ? fromBase64Url(*encoded) : std::nullopt;
  }

  std::vector<Json> list(unsigned max) const {
    std::vector<Json> items;
    if (!jsc_value_is_array(value_.get())) return items;
    const double length = (*this)["length"].number().value_or(0);
    for (unsigned i = 0; i < max && i < length; ++i)
      items.emplace_back(jsc_value_object_get_property_at_index(value_.get(), i));
    return items;
  }

 private:
  JSCContext* context() const { return jsc_value_get_context(value_.get()); }

  Owned<JSCValue> value_;
};

UserVerification userVerificationOf(const std::optional<std::string>& text) {
  if (text == "required") return UserVerification::kRequired;
  return text == "discouraged" ? UserVerification::kDiscouraged : UserVerification::kPreferred;
}

ResidentKey residentKeyOf(const Json& selection) {
  const std::optional<std::string> text = selection["residentKey"].text();
  if (text == "required") return ResidentKey::kRequired;
  if (text == "preferred") return ResidentKey::kPreferred;
  const bool isRequired = text != "discouraged" && selection["requireResidentKey"].isTrue();
  return isRequired ? ResidentKey::kRequired : ResidentKey::kDiscouraged;
}

// Section 5.1.3, step 4: the recommended ranges and defaults.
milliseconds timeoutOf(const Json& options, UserVerification verification) {
  const bool isDiscouraged = verification == UserVerification::kDiscouraged;
  const milliseconds min = isDiscouraged ? seconds(30) : minutes(5);
  const milliseconds max = isDiscouraged ? minutes(3) : minutes(10);
  const std::optional<double> timeout = options["timeout"].number();
  if (!timeout) return isDiscouraged ? minutes(2) : minutes(5);
  return milliseconds(static_cast<milliseconds::rep>(
      std::clamp(*timeout, static_cast<double>(min.count()), static_cast<double>(max.count()))));
}

bool isPublicKey(const Json& item) {
  return item["type"].text() == "public-key";
}

// Section 5.8.3: unknown types are ignored. No security key has a longer id.
std::vector<Bytes> credentialsOf(const Json& list) {
  std::vector<Bytes> ids;
  for (const Json& each : list.list(kMaxCredentials)) {
    std::optional<Bytes> id = each["id"].bytes();
    if (isPublicKey(each) && id && !id->empty() && id->size() <= kMaxCredentialId) ids.push_back(*std::move(id));
  }
  return ids;
}

// Section 5.1.3, step 10.
std::vector<int> algorithmsOf(const Json& parameters) {
  const std::vector<Json> all = parameters.list(kMaxCredentials);
  if (all.empty()) return {kEs256, kRs256};
  std::vector<int> algorithms;
  for (const Json& each : all) {
    const std::optional<double> number = each["alg"].number();
    const auto* const known = std::find_if(std::begin(kAlgorithms), std::end(kAlgorithms),
                                           [&](int algorithm) { return number == static_cast<double>(algorithm); });
    const bool isKnown = isPublicKey(each) && known != std::end(kAlgorithms);
    if (isKnown && std::find(algorithms.begin(), algorithms.end(), *known) == algorithms.end())
      algorithms.push_back(*known);
  }
  return algorithms;
}

void decodeCreation(const Json& options, CredentialRequest& request) {
  const Json selection = options["authenticatorSelection"];
  Registration registration;
  registration.rpName = options["rp"]["name"].text().value_or("");
  const Json user = options["user"];
  registration.userId = user["id"].bytes().value_or(Bytes());
  registration.userName = user["name"].text().value_or("");
  registration.userDisplayName = user["displayName"].text().value_or("");
  registration.algorithms = algorithmsOf(options["pubKeyCredParams"]);
  registration.excluded = credentialsOf(options["excludeCredentials"]);
  registration.residentKey = residentKeyOf(selection);
  registration.userVerification = userVerificationOf(selection["userVerification"].text());
  registration.credProps = options["extensions"]["credProps"].isTrue();

  request.rpId = options["rp"]["id"].text();
  request.timeout = timeoutOf(options, registration.userVerification);
  if (registration.userId.empty() || registration.userId.size() > kMaxUserId) {
    request.error = "TypeError";
  } else if (registration.algorithms.empty() || !options["extensions"]["appid"].isMissing()) {
    request.error = "NotSupportedError";  // section 10.1: an AppID belongs to a sign-in
  } else if (selection["authenticatorAttachment"].text() == "platform" ||
             options["excludeCredentials"].list(kMaxCredentials + 1).size() > kMaxCredentials) {
    request.error = "NotAllowedError";
  }
  request.options = std::move(registration);
}

void decodeGet(const Json& options, CredentialRequest& request) {
  const Json allowed = options["allowCredentials"];
  Assertion assertion;
  assertion.allowed = credentialsOf(allowed);
  assertion.userVerification = userVerificationOf(options["userVerification"].text());

  request.rpId = options["rpId"].text();
  request.appId = options["extensions"]["appid"].text();
  request.timeout = timeoutOf(options, assertion.userVerification);
  const std::size_t given = allowed.list(kMaxCredentials + 1).size();
  if (given > kMaxCredentials || (given > 0 && assertion.allowed.empty())) request.error = "NotAllowedError";
  request.options = std::move(assertion);
}

// Characters that need no escaping in the reply.
bool isValidId(const std::string& id) {
  const auto isPlain = [](char c) { return g_ascii_isalnum(c) || c == '-'; };
  return !id.empty() && id.size() <= kMaxId && std::all_of(id.begin(), id.end(), isPlain);
}

//   ("id", "x")  => "\"id\":\"x\""
std::string member(const char* name, const std::string& value) {
  return std::string("\"") + name + "\":\"" + value + "\"";
}
std::string member(const char* name, const Bytes& value) {
  return member(name, toBase64Url(value));
}

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

std::string credential(const std::string& id, const Bytes& credentialId, const std::string& response,
                       const std::string& extensions) {
  return "{" + member("id", id) + ",\"credential\":{" + member("id", credentialId) + "," +
         member("rawId", credentialId) + "," + member("type", std::string("public-key")) + "," +
         member("authenticatorAttachment", std::string("cross-platform")) + ",\"response\":{" + response +
         "},\"clientExtensionResults\":{" + extensions + "}}}";
}

}  // namespace

std::optional<CredentialRequest> decodeCredentialRequest(JSCContext* context, const std::string& text) {
  if (text.size() > kMaxCredentialRequest) return std::nullopt;
  JSCValue* const value = jsc_value_new_from_json(context, text.c_str());
  jsc_context_clear_exception(context);
  if (value == nullptr) return std::nullopt;
  const Json message(value);
  CredentialRequest request;
  request.id = message["id"].text().value_or("");
  if (!isValidId(request.id)) return std::nullopt;

  const std::optional<std::string> method = message["method"].text();
  request.isCancel = method == "cancel";
  if (request.isCancel) return request;
  if (method != "create" && method != "get") return std::nullopt;

  const Json options = message["publicKey"];
  method == "create" ? decodeCreation(options, request) : decodeGet(options, request);
  request.challenge = options["challenge"].bytes().value_or(Bytes());
  if (request.challenge.empty() && request.error.empty()) request.error = "TypeError";
  return request;
}

std::string encodeFailure(const std::string& id, const std::string& error) {
  return "{" + member("id", id) + "," + member("error", error) + "}";
}

std::string encodeRegistration(const std::string& id, const std::string& clientDataJson,
                               const RegistrationResult& result) {
  std::string transports;
  for (const std::string& each : result.transports) {
    if (isValidId(each)) transports += (transports.empty() ? "\"" : ",\"") + each + "\"";
  }
  std::string extensions;
  if (result.residentKey)
    extensions = std::string("\"credProps\":{\"rk\":") + (*result.residentKey ? "true}" : "false}");
  return credential(
      id, result.credentialId,
      member("clientDataJSON", bytesOf(clientDataJson)) + "," + member("attestationObject", result.attestationObject) +
          "," + member("authenticatorData", result.authenticatorData) + "," + member("publicKey", result.publicKeyDer) +
          ",\"publicKeyAlgorithm\":" + std::to_string(result.algorithm) + ",\"transports\":[" + transports + "]",
      extensions);
}

std::string encodeAssertion(const std::string& id, const std::string& clientDataJson, const AssertionResult& result,
                            bool appIdRequested) {
  std::string extensions;
  if (appIdRequested) extensions = std::string("\"appid\":") + (result.usedAppId ? "true" : "false");
  return credential(id, result.credentialId,
                    member("clientDataJSON", bytesOf(clientDataJson)) + "," +
                        member("authenticatorData", result.authenticatorData) + "," +
                        member("signature", result.signature) +
                        (result.userHandle.empty() ? "" : "," + member("userHandle", result.userHandle)),
                    extensions);
}
