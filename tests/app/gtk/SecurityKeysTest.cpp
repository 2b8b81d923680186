#include "tests/app/gtk/SecurityKeysTest.h"

#include <gio/gio.h>

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/linux/Glib.h"
#include "tests/support/Environment.h"

namespace {

// The CTAP 2 commands.
constexpr int kMakeCredential = 1;
constexpr int kGetAssertion = 2;

constexpr char kTouched[] = R"("touched": true)";

std::string quoted(const std::string& text) {
  return "\"" + text + "\"";
}

// The verdict of a relying party.
std::string verdict(const std::string& request) {
  const support::Variable withoutLibraries("LD_PRELOAD", std::nullopt);
  const platform::Owned<GSubprocess> process(
      g_subprocess_new(static_cast<GSubprocessFlags>(G_SUBPROCESS_FLAGS_STDIN_PIPE | G_SUBPROCESS_FLAGS_STDOUT_PIPE),
                       nullptr, "/usr/bin/python3", RELYING_PARTY, nullptr));
  char* output = nullptr;
  (void)g_subprocess_communicate_utf8(process.get(), request.c_str(), nullptr, &output, nullptr, nullptr);
  return platform::Owned<char, g_free>(output).get();
}

std::string base64Url(const std::string& text) {
  return quoted(toBase64Url(Bytes(text.begin(), text.end())));
}

class CeremonyTest : public SecurityKeysTest {
 protected:
  std::string judged(const RegistrationResult& made, const std::optional<AssertionResult>& used,
                     const char* userVerification = "preferred") const {
    std::ostringstream request;
    request << R"({"rpId": ")" << kRpId << R"(", "challenge": )" << quoted(toBase64Url(kChallenge))
            << R"(, "userVerification": ")" << userVerification << R"(", "registration": {"clientDataJSON": )"
            << base64Url(clientDataJson("webauthn.create", kChallenge, kOrigin)) << R"(, "attestationObject": )"
            << quoted(toBase64Url(made.attestationObject)) << "}";
    if (used) {
      request << R"(, "assertion": {"id": )" << quoted(toBase64Url(used->credentialId)) << R"(, "clientDataJSON": )"
              << base64Url(clientDataJson("webauthn.get", kChallenge, kOrigin)) << R"(, "authenticatorData": )"
              << quoted(toBase64Url(used->authenticatorData)) << R"(, "signature": )"
              << quoted(toBase64Url(used->signature)) << "}";
    }
    request << "}";
    return verdict(request.str());
  }
};

TEST_F(CeremonyTest, RegistersAndSignsIn) {
  keys.plug("a");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  ASSERT_TRUE(waitForEvent("touch"));
  EXPECT_FALSE(registered);
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);
  EXPECT_EQ(registered->transports, (std::vector<std::string>{"nfc", "usb"}));
  EXPECT_FALSE(registered->residentKey);
  const RegistrationResult made = *registered;

  start(assertion({made.credentialId}));
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_EQ(asserted->credentialId, made.credentialId);
  EXPECT_TRUE(asserted->userHandle.empty());
  EXPECT_EQ(judged(made, asserted), "accepted\n");
}

TEST_F(CeremonyTest, RelyingPartyRejectsAnotherSignature) {
  keys.plug("a", kTouched);
  const RegistrationResult made = registerAtOnce();
  start(assertion({made.credentialId}));
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  asserted->authenticatorData.back() ^= 1;
  EXPECT_EQ(judged(made, asserted), "rejected: Invalid signature.\n");
}

TEST_F(CeremonyTest, UsesEachAlgorithm) {
  keys.plug("a", kTouched);
  for (const int algorithm : {kEs256, kEdDsa, kRs256}) {
    Registration request = registration();
    request.algorithms = {-65535, algorithm};
    const RegistrationResult made = registerAtOnce(request);
    EXPECT_EQ(made.algorithm, algorithm);
    start(assertion({made.credentialId}));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(judged(made, asserted), "accepted\n") << algorithm;
  }
}

TEST_F(CeremonyTest, PrefersTheFirstAlgorithmThatTheKeyHas) {
  keys.plug("a", R"("touched": true, "algorithms": [-7, -8])");
  Registration request = registration();
  request.algorithms = {kRs256, kEdDsa, kEs256};
  EXPECT_EQ(registerAtOnce(request).algorithm, kEdDsa);
}

TEST_F(CeremonyTest, UsesAU2fKey) {
  keys.plug("a", R"("u2f": true)");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);
  const RegistrationResult made = *registered;
  EXPECT_EQ(made.transports, (std::vector<std::string>{"usb"}));

  start(assertion({Bytes(300, 1), Bytes(20, 1), made.credentialId}));
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_EQ(judged(made, asserted), "accepted\n");
}

TEST_F(CeremonyTest, UsesTheAppIdOfAU2fCredential) {
  const std::string appId = "https://login.example.test/app-id.json";
  for (const char* const options : {R"("touched": true, "u2f": true)", kTouched}) {
    keys.plug("a", options);
    Registration old = registration();
    old.rpId = appId;
    const Bytes id = registerAtOnce(old).credentialId;

    Assertion request = assertion({Bytes(20, 1), id});
    start(request);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(failed, KeyError::kNotAllowed);

    request.appId = appId;
    start(request);
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(asserted);
    EXPECT_TRUE(asserted->usedAppId);
    keys.pull("a");
  }
}

TEST_F(CeremonyTest, PrefersTheRpIdToTheAppId) {
  keys.plug("a", kTouched);
  Assertion request = assertion({registerAtOnce().credentialId});
  request.appId = "https://login.example.test/app-id.json";
  start(request);
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_FALSE(asserted->usedAppId);
}

TEST_F(CeremonyTest, RefusesAKeyWithAnExcludedCredential) {
  for (const char* const options : {kTouched, R"("touched": true, "u2f": true)"}) {
    keys.plug("a", options);
    Registration request = registration();
    request.excluded = {Bytes(32, 1), registerAtOnce().credentialId};
    start(request);
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(failed, KeyError::kInvalidState) << options;
    keys.pull("a");
  }
}

TEST_F(CeremonyTest, FindsACredentialInALongList) {
  keys.plug("a", R"("touched": true, "maxList": 3, "maxId": 100)");
  std::vector<Bytes> ids(20, Bytes(60, 7));
  ids.emplace_back(200, 7);
  ids.push_back(registerAtOnce().credentialId);
  ids.emplace_back(60, 8);

  keys.plug("a", R"("maxList": 3, "maxId": 100)");
  start(assertion(ids));
  ASSERT_TRUE(keys.waitFor("waiting a"));  // once: the search needs no touch
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(asserted);

  Registration request = registration();
  request.excluded = ids;
  start(request);
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kInvalidState);
}

TEST_F(CeremonyTest, FailsForAnUnknownCredentialOnlyAfterATouch) {
  for (const char* const options : {"", R"("u2f": true)"}) {
    keys.plug("a", options);
    start(assertion({Bytes(32, 1)}));
    ASSERT_TRUE(keys.waitFor("waiting a"));
    EXPECT_FALSE(failed);
    keys.touch("a");
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(failed, KeyError::kNotAllowed);
    keys.pull("a");
  }
}

TEST_F(CeremonyTest, AKeyMayOmitTheOnlyCredential) {
  keys.plug("a", R"("touched": true, "omitsId": true)");
  const Bytes id = registerAtOnce().credentialId;
  start(assertion({id}));
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_EQ(asserted->credentialId, id);
}

TEST_F(CeremonyTest, RefusesACredentialThatIsNotAllowed) {
  keys.plug("a", kTouched);
  const Bytes id = registerAtOnce().credentialId;
  keys.plug("a", R"("touched": true, "otherId": true)");
  start(assertion({id, Bytes(32, 1)}));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(CeremonyTest, RefusesAnEmptySignature) {
  keys.plug("a", kTouched);
  const Bytes id = registerAtOnce().credentialId;
  keys.plug("a", R"("touched": true, "signsNothing": true)");
  start(assertion({id}));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(CeremonyTest, FindsAHiddenCredentialInALongList) {
  keys.plug("a", R"("pin": "1234", "touched": true, "hides": true)");
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);
  std::vector<Bytes> ids(20, Bytes(60, 7));
  ids.push_back(registered->credentialId);

  Assertion sought = assertion(ids);
  sought.userVerification = UserVerification::kPreferred;
  start(sought);
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("wrong pin 7"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(asserted);

  Registration again = registration();
  again.excluded = ids;
  start(again);
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kInvalidState);
}

TEST_F(CeremonyTest, LetsTheUserChooseAnAccount) {
  keys.plug("a", R"("pin": "1234", "touched": true)");
  Registration request = registration();
  request.residentKey = ResidentKey::kRequired;
  request.credProps = true;
  for (const std::string name : {"ada", "bob", "cy"}) {
    request.userId = Bytes(name.begin(), name.end());
    request.userName = name;
    request.userDisplayName = name == "cy" ? "\u0301\n" : "Ada Lovelace";
    start(request);
    ASSERT_TRUE(waitForEvent("pin 8"));
    securityKeys.givePin("1234");
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(registered);
    EXPECT_EQ(registered->residentKey, true);
  }

  start(assertion());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEvent("accounts"));
  ASSERT_EQ(accounts.size(), 3u);
  EXPECT_EQ(accounts[0].name, "cy");
  EXPECT_EQ(accounts[0].displayName, "");  // it shows nothing
  EXPECT_EQ(accounts[1].displayName, "Ada Lovelace");
  securityKeys.chooseAccount(1);
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_EQ(asserted->userHandle, (Bytes{'b', 'o', 'b'}));
}

TEST_F(CeremonyTest, StoresACredentialAsThePageAsks) {
  for (const bool canStore : {true, false}) {
    keys.plug("a", std::string(R"("touched": true, "residentKeys": )") + (canStore ? "true" : "false"));
    for (const ResidentKey wanted : {ResidentKey::kRequired, ResidentKey::kPreferred, ResidentKey::kDiscouraged}) {
      Registration request = registration();
      request.credProps = true;
      request.residentKey = wanted;
      start(request);
      ASSERT_TRUE(waitForEnd());
      if (wanted == ResidentKey::kRequired && !canStore) {
        EXPECT_EQ(failed, KeyError::kConstraint);
      } else {
        ASSERT_TRUE(registered);
        EXPECT_EQ(registered->residentKey, canStore && wanted != ResidentKey::kDiscouraged);
      }
    }
    keys.pull("a");
  }
}

TEST_F(CeremonyTest, AFullKeyStoresNoPreferredCredential) {
  keys.plug("a", R"("touched": true, "full": true)");
  Registration request = registration();
  request.credProps = true;
  request.residentKey = ResidentKey::kPreferred;
  EXPECT_EQ(registerAtOnce(request).residentKey, false);
  request.residentKey = ResidentKey::kRequired;
  start(request);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kConstraint);
}

TEST_F(CeremonyTest, ReportsWhatTheKeyCannotDo) {
  keys.plug("a", R"("touched": true, "u2f": true)");
  Registration request = registration();
  request.algorithms = {kEdDsa, kRs256};
  start(request);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotSupported);

  request = registration();
  request.userVerification = UserVerification::kRequired;
  start(request);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kConstraint);

  Assertion use = assertion({Bytes(32, 1)});
  use.userVerification = UserVerification::kRequired;
  start(use);
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);

  start(assertion());
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(CeremonyTest, RefusesDataForAnotherRelyingParty) {
  keys.plug("a", kTouched);
  const Bytes id = registerAtOnce().credentialId;
  keys.plug("a", R"("touched": true, "wrongRp": true)");
  start(registration());
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
  start(assertion({id}));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(CeremonyTest, MapsTheErrorsOfAKey) {
  keys.plug("a", kTouched);
  const Bytes id = registerAtOnce().credentialId;
  // KEY_STORE_FULL, UNSUPPORTED_ALGORITHM, UNSUPPORTED_OPTION, INVALID_LENGTH, OTHER
  const std::vector<std::pair<int, KeyError>> errors = {{0x28, KeyError::kConstraint},
                                                        {0x26, KeyError::kNotSupported},
                                                        {0x2b, KeyError::kConstraint},
                                                        {0x03, KeyError::kNotAllowed},
                                                        {0x7f, KeyError::kNotAllowed}};
  for (const auto& [status, error] : errors) {
    keys.at("a", kMakeCredential, std::to_string(status));
    start(registration());
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(failed, error) << status;
  }
  for (const auto& [status, error] : errors) {
    keys.at("a", kGetAssertion, std::to_string(status));
    start(assertion({id}));
    ASSERT_TRUE(waitForEnd());
    EXPECT_EQ(failed, KeyError::kNotAllowed) << status;
  }
}

}  // namespace
