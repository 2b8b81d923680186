// How a key verifies the user: by PIN or by itself.

#include <cstdint>
#include <string>

#include "tests/app/gtk/SecurityKeysTest.h"

namespace {

constexpr char kWithPin[] = R"("pin": "1234", "touched": true)";
constexpr std::uint8_t kVerified = 0x04;  // flag UV

bool isVerified(const Bytes& authenticatorData) {
  return (authenticatorData.at(32) & kVerified) != 0;
}

class SecurityKeyPinTest : public SecurityKeysTest {
 protected:
  static Registration wanting(UserVerification verification) {
    Registration request = registration();
    request.userVerification = verification;
    return request;
  }
};

TEST_F(SecurityKeyPinTest, AsksForThePin) {
  for (const char* const protocol : {R"(, "pinProtocol": 1)", R"(, "pinProtocol": 2)", R"(, "version": 2.0)"}) {
    keys.plug("a", std::string(kWithPin) + protocol);
    for (const auto wanted :
         {UserVerification::kRequired, UserVerification::kPreferred, UserVerification::kDiscouraged}) {
      start(wanting(wanted));
      ASSERT_TRUE(waitForEvent("pin 8")) << protocol;
      securityKeys.givePin("1234");
      ASSERT_TRUE(waitForEnd());
      ASSERT_TRUE(registered);
      EXPECT_TRUE(isVerified(registered->authenticatorData));
    }
    keys.pull("a");
  }
}

TEST_F(SecurityKeyPinTest, AsksForNoPinWhereDiscouraged) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);

  Assertion request = assertion({registered->credentialId});
  request.userVerification = UserVerification::kDiscouraged;
  start(request);
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_FALSE(isVerified(asserted->authenticatorData));
}

TEST_F(SecurityKeyPinTest, NormalizesThePin) {
  keys.plug("a", R"("pin": "caf\u00e9", "touched": true)");
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("cafe\u0301");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, NoTryIsLostForWhatIsNoPin) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  const std::string grows = "\u0958";  // three bytes, and six when it is normalized
  for (const std::string& each : {std::string(), std::string("123"), std::string("1234\n"), std::string(64, '1'),
                                  grows + grows + grows + grows + std::string(48, '1')})
    EXPECT_FALSE(securityKeys.givePin(each)) << each;
  EXPECT_TRUE(securityKeys.givePin("4321"));
  EXPECT_TRUE(waitForEvent("wrong pin 7"));
}

TEST_F(SecurityKeyPinTest, AcceptsThePinAfterAWrongOne) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("wrong pin 7"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, ThreeWrongPinsNeedReinsertion) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("wrong pin 7"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("wrong pin 6"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("blocked until reinserted"));

  keys.pull("a");
  ASSERT_TRUE(waitForEvent("key"));
  keys.plug("a", kWithPin);
  ASSERT_TRUE(waitForEvent("pin 5"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, ABlockedKeyLeavesRoomForAnother) {
  keys.plug("a", R"("pin": "1234", "touched": true, "tries": 0)");
  start(registration());
  ASSERT_TRUE(waitForEvent("blocked"));
  keys.plug("b", R"("touched": true)");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, TheLastTryBlocksTheKey) {
  keys.plug("a", R"("pin": "1234", "touched": true, "tries": 1)");
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 1"));
  securityKeys.givePin("4321");
  ASSERT_TRUE(waitForEvent("blocked"));
}

TEST_F(SecurityKeyPinTest, ForgetsTheQuestionWhenTheKeyIsPulledOut) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  keys.pull("a");
  ASSERT_TRUE(waitForEvent("key"));
  keys.plug("b", R"("pin": "5678", "touched": true)");
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("5678");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, APinNeverReachesAnotherKey) {
  keys.plug("a", kWithPin);
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  keys.pull("a");
  keys.plug("b", R"("pin": "5678", "touched": true)");
  events.clear();
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("5678");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, ARequiredVerificationNeedsAPinThatIsSet) {
  keys.plug("a", R"("touched": true)");
  start(wanting(UserVerification::kRequired));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kConstraint);

  start(wanting(UserVerification::kPreferred));
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);
  EXPECT_FALSE(isVerified(registered->authenticatorData));
}

TEST_F(SecurityKeyPinTest, RefusesAKeyThatIgnoresRequiredVerification) {
  keys.plug("a", R"("pin": "1234", "touched": true, "ignoresVerification": true)");
  start(wanting(UserVerification::kRequired));
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(SecurityKeyPinTest, TheKeyVerifiesTheUserItself) {
  for (const char* const version : {"2.0", "2.1"}) {
    keys.plug("a", std::string(R"("touched": true, "builtIn": [0], "version": )") + version);
    start(wanting(UserVerification::kRequired));
    ASSERT_TRUE(waitForEnd());
    ASSERT_TRUE(registered) << version;
    EXPECT_TRUE(isVerified(registered->authenticatorData));
    keys.pull("a");
  }
}

TEST_F(SecurityKeyPinTest, AnotherFingerIsTriedAgain) {
  keys.plug("a", R"("touched": true, "builtIn": [63, 63, 0])");
  start(wanting(UserVerification::kRequired));
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPinTest, AsksForThePinWhenTheFingerIsBlocked) {
  keys.plug("a", R"("pin": "1234", "touched": true, "builtIn": [63, 60])");
  start(wanting(UserVerification::kRequired));
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);
  EXPECT_TRUE(isVerified(registered->authenticatorData));
}

TEST_F(SecurityKeyPinTest, FindsAHiddenCredentialByPin) {
  keys.plug("a", R"("pin": "1234", "touched": true, "hides": true)");
  start(registration());
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(registered);

  start(assertion({Bytes(32, 1), registered->credentialId}));
  ASSERT_TRUE(waitForEvent("pin 8"));
  securityKeys.givePin("1234");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(asserted);
}

}  // namespace
