#include "app/gtk/page/CredentialRequest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>
#include <variant>

#include "app/gtk/Glib.h"

namespace {

using std::chrono::minutes;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kUser[] = R"("user":{"id":"AQI","name":"ada","displayName":"Ada"})";

class CredentialRequestTest : public testing::Test {
 protected:
  std::optional<CredentialRequest> decoded(const std::string& text) const {
    return decodeCredentialRequest(context_.get(), text);
  }
  CredentialRequest get(const std::string& members) const {
    return decoded(R"({"id":"a-1","method":"get","publicKey":{"challenge":"AQID")" + members + "}}").value();
  }
  CredentialRequest create(const std::string& members) const {
    return decoded(R"({"id":"a-1","method":"create","publicKey":{"challenge":"AQID")" + members + "}}").value();
  }
  CredentialRequest createFor(const std::string& members) const { return create("," + (kUser + members)); }

 private:
  Owned<JSCContext> context_{jsc_context_new()};
};

TEST_F(CredentialRequestTest, DecodesASignIn) {
  const CredentialRequest request = get(
      R"(,"rpId":"a.example","timeout":400000,"userVerification":"required","extensions":{"appid":"https://a.example/"},
          "allowCredentials":[{"type":"public-key","id":"_-8"},{"type":"other","id":"AA"},{"type":"public-key","id":""}])");
  EXPECT_EQ(request.id, "a-1");
  EXPECT_EQ(request.error, "");
  EXPECT_THAT(request.challenge, ElementsAre(1, 2, 3));
  EXPECT_EQ(request.rpId, "a.example");
  EXPECT_EQ(request.appId, "https://a.example/");
  EXPECT_EQ(request.timeout, seconds(400));
  const auto& assertion = std::get<Assertion>(request.options);
  EXPECT_EQ(assertion.userVerification, UserVerification::kRequired);
  EXPECT_THAT(assertion.allowed, ElementsAre(Bytes{0xff, 0xef}));
}

TEST_F(CredentialRequestTest, DecodesARegistration) {
  const CredentialRequest request = createFor(
      R"(,"rp":{"id":"a.example","name":"A"},"pubKeyCredParams":[{"type":"public-key","alg":-257},
          {"type":"public-key","alg":-35},{"type":"public-key","alg":-7},{"type":"public-key","alg":-7}],
          "excludeCredentials":[{"type":"public-key","id":"AA"}],"extensions":{"credProps":true,"unknown":1},
          "authenticatorSelection":{"residentKey":"preferred","userVerification":"discouraged"})");
  EXPECT_EQ(request.error, "");
  EXPECT_EQ(request.rpId, "a.example");
  EXPECT_EQ(request.timeout, minutes(2));
  const auto& registration = std::get<Registration>(request.options);
  EXPECT_EQ(registration.rpName, "A");
  EXPECT_THAT(registration.userId, ElementsAre(1, 2));
  EXPECT_EQ(registration.userName, "ada");
  EXPECT_EQ(registration.userDisplayName, "Ada");
  EXPECT_THAT(registration.algorithms, ElementsAre(-257, -7));
  EXPECT_THAT(registration.excluded, ElementsAre(Bytes{0}));
  EXPECT_EQ(registration.residentKey, ResidentKey::kPreferred);
  EXPECT_EQ(registration.userVerification, UserVerification::kDiscouraged);
  EXPECT_TRUE(registration.credProps);
}

TEST_F(CredentialRequestTest, MissingMembersHaveTheStandardsDefaults) {
  const CredentialRequest request = createFor("");
  EXPECT_EQ(request.error, "");
  EXPECT_EQ(request.rpId, std::nullopt);
  EXPECT_EQ(request.timeout, minutes(5));
  const auto& registration = std::get<Registration>(request.options);
  EXPECT_THAT(registration.algorithms, ElementsAre(-7, -257));
  EXPECT_EQ(registration.residentKey, ResidentKey::kDiscouraged);
  EXPECT_EQ(registration.userVerification, UserVerification::kPreferred);
  EXPECT_FALSE(registration.credProps);
}

TEST_F(CredentialRequestTest, OldMemberRequiresAResidentKey) {
  const auto residentKey = [this](const char* selection) {
    return std::get<Registration>(createFor(R"(,"authenticatorSelection":)" + std::string(selection)).options)
        .residentKey;
  };
  EXPECT_EQ(residentKey(R"({"requireResidentKey":true})"), ResidentKey::kRequired);
  EXPECT_EQ(residentKey(R"({"requireResidentKey":true,"residentKey":"discouraged"})"), ResidentKey::kDiscouraged);
  EXPECT_EQ(residentKey(R"({"requireResidentKey":true,"residentKey":"new"})"), ResidentKey::kRequired);
  EXPECT_EQ(residentKey(R"({"requireResidentKey":1})"), ResidentKey::kDiscouraged);
}

TEST_F(CredentialRequestTest, TimeoutStaysWithinTheRange) {
  EXPECT_EQ(get(R"(,"timeout":0)").timeout, minutes(5));
  EXPECT_EQ(get(R"(,"timeout":1e300)").timeout, minutes(10));
  EXPECT_EQ(get(R"(,"timeout":"60")").timeout, minutes(5));
  EXPECT_EQ(get(R"(,"userVerification":"discouraged","timeout":-1)").timeout, seconds(30));
  EXPECT_EQ(get(R"(,"userVerification":"discouraged","timeout":1e9)").timeout, minutes(3));
}

TEST_F(CredentialRequestTest, RefusesWhatNoKeyCanDo) {
  EXPECT_EQ(create("").error, "TypeError");
  EXPECT_EQ(create(R"(,"user":{"id":")" + std::string(88, 'A') + "\"}").error, "TypeError");
  EXPECT_EQ(createFor(R"(,"pubKeyCredParams":[{"type":"public-key","alg":-7.5}])").error, "NotSupportedError");
  EXPECT_EQ(createFor(R"(,"authenticatorSelection":{"authenticatorAttachment":"platform"})").error, "NotAllowedError");
  EXPECT_EQ(get(R"(,"challenge":"")").error, "TypeError");
  EXPECT_EQ(get(R"(,"challenge":"A=")").error, "TypeError");
  EXPECT_EQ(get(R"(,"challenge":"A")").error, "TypeError");
  EXPECT_EQ(get(R"(,"allowCredentials":[{"type":"other","id":"AA"}])").error, "NotAllowedError");
}

TEST_F(CredentialRequestTest, LimitsTheNumberOfCredentials) {
  std::string list = R"({"type":"public-key","id":"AA"})";
  for (int i = 1; i < 64; ++i)
    list += R"(,{"type":"public-key","id":"AA"})";
  EXPECT_EQ(get(R"(,"allowCredentials":[)" + list + "]").error, "");
  EXPECT_EQ(get(R"(,"allowCredentials":[)" + list + ",0]").error, "NotAllowedError");
  EXPECT_EQ(createFor(R"(,"excludeCredentials":[)" + list + ",0]").error, "NotAllowedError");
}

TEST_F(CredentialRequestTest, DropsCredentialsTooLongForAnyKey) {
  const auto allowed = [this](std::size_t characters) {
    const std::string list =
        R"(,"allowCredentials":[{"type":"public-key","id":")" + std::string(characters, 'A') + "\"}]";
    return std::get<Assertion>(get(list).options).allowed.size();
  };
  EXPECT_EQ(allowed(1364), 1u);  // 1023 bytes
  EXPECT_EQ(allowed(1366), 0u);
}

TEST_F(CredentialRequestTest, ACancelNamesItsRequest) {
  const CredentialRequest request = decoded(R"({"id":"b","method":"cancel"})").value();
  EXPECT_TRUE(request.isCancel);
  EXPECT_EQ(request.id, "b");
}

TEST_F(CredentialRequestTest, IgnoresWhatIsNoRequest) {
  for (const std::string& text :
       {std::string(), std::string("{"), std::string("null"), std::string("[]"), std::string("\"a\""),
        std::string(R"({"id":"a"})"), std::string(R"({"id":"a","method":"delete"})"),
        std::string(R"({"id":"a\"","method":"get"})"), std::string(R"({"id":1,"method":"get"})"),
        R"({"method":"get","id":")" + std::string(65, 'a') + "\"}", std::string(100000, '['),
        std::string(kMaxCredentialRequest + 1, ' ') + "{}"}) {
    EXPECT_FALSE(decoded(text)) << text.substr(0, 40);
  }
}

TEST_F(CredentialRequestTest, EncodesReplies) {
  EXPECT_EQ(encodeFailure("a", "AbortError"), R"({"id":"a","error":"AbortError"})");
  RegistrationResult registered;
  registered.credentialId = {0xfb, 0xff};
  registered.algorithm = -8;
  registered.residentKey = true;
  registered.transports = {"usb", "\"", "nfc"};
  EXPECT_EQ(encodeRegistration("a", "{}", registered),
            R"({"id":"a","credential":{"id":"-_8","rawId":"-_8","type":"public-key",)"
            R"("authenticatorAttachment":"cross-platform","response":{"clientDataJSON":"e30","attestationObject":"",)"
            R"("authenticatorData":"","publicKey":"","publicKeyAlgorithm":-8,"transports":["usb","nfc"]},)"
            R"("clientExtensionResults":{"credProps":{"rk":true}}}})");
  AssertionResult asserted;
  asserted.signature = {1};
  asserted.usedAppId = true;
  EXPECT_EQ(encodeAssertion("a", "{}", asserted, true),
            R"({"id":"a","credential":{"id":"","rawId":"","type":"public-key",)"
            R"("authenticatorAttachment":"cross-platform","response":{"clientDataJSON":"e30","authenticatorData":"",)"
            R"("signature":"AQ"},"clientExtensionResults":{"appid":true}}})");
}

}  // namespace
