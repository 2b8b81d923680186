// Keys that come and go, and ceremonies that end early.

#include <chrono>
#include <vector>

#include "tests/app/gtk/SecurityKeysTest.h"

namespace {

// The CTAP 2 commands.
constexpr int kMakeCredential = 1;
constexpr int kGetInfo = 4;

constexpr char kTouched[] = R"("touched": true)";

class SecurityKeyPlugTest : public SecurityKeysTest {};

TEST_F(SecurityKeyPlugTest, AsksForAKeyThatIsPluggedInLate) {
  start(registration());
  ASSERT_TRUE(waitForEvent("key"));
  keys.plug("a", kTouched);
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, GoesOnAfterAKeyIsPulledOut) {
  for (const int command : {kGetInfo, kMakeCredential}) {
    for (const char* const how : {R"("pull")", R"("break")"}) {
      keys.plug("a", kTouched);
      keys.at("a", command, how);
      start(registration());
      ASSERT_TRUE(keys.waitFor("pulled a"));
      ASSERT_TRUE(waitForEvent("key"));
      keys.plug("b", kTouched);
      ASSERT_TRUE(waitForEnd());
      EXPECT_TRUE(registered) << command << how;
      keys.pull("b");
    }
  }
}

TEST_F(SecurityKeyPlugTest, GoesOnAfterAKeyIsPulledOutWhileItWaits) {
  keys.plug("a");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.pull("a");
  ASSERT_TRUE(waitForEvent("key"));
  keys.plug("a", kTouched);
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, UsesTheKeyThatIsTouched) {
  keys.plug("a", R"("touched": true)");
  const Bytes id = registerAtOnce().credentialId;
  keys.plug("a");
  keys.plug("b");
  start(assertion({id}));
  ASSERT_TRUE(keys.waitFor("waiting a"));
  ASSERT_TRUE(keys.waitFor("waiting b"));
  ASSERT_TRUE(waitForEvent("touch"));
  keys.touch("a");
  ASSERT_TRUE(keys.waitFor("cancelled b"));
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(asserted);
}

TEST_F(SecurityKeyPlugTest, OneOfTwoKeysMayBePulledOut) {
  keys.plug("a");
  keys.plug("b");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  ASSERT_TRUE(keys.waitFor("waiting b"));
  keys.pull("a");
  ASSERT_TRUE(keys.waitFor("cancelled b"));
  ASSERT_TRUE(keys.waitFor("waiting b"));
  keys.touch("b");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, AKeyMayBePulledOutAtItsAccounts) {
  constexpr char kVerifying[] = R"("touched": true, "builtIn": [0])";
  keys.plug("a", kVerifying);
  Registration request = registration();
  request.residentKey = ResidentKey::kRequired;
  for (const Bytes& id : {Bytes{1}, Bytes{2}}) {
    request.userId = id;
    (void)registerAtOnce(request);
  }
  start(assertion());
  ASSERT_TRUE(waitForEvent("accounts"));
  keys.pull("a");
  ASSERT_TRUE(waitForEvent("key"));
  securityKeys.chooseAccount(0);
  keys.plug("a", kVerifying);
  ASSERT_TRUE(waitForEvent("accounts"));
  securityKeys.chooseAccount(1);
  ASSERT_TRUE(waitForEnd());
  ASSERT_TRUE(asserted);
  EXPECT_EQ(asserted->userHandle, Bytes{1});
}

TEST_F(SecurityKeyPlugTest, AKeyThatCannotBeOpenedDoesNotCount) {
  keys.plug("a");
  keys.plug("b", R"("busy": true)");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
  keys.pull("a");
  start(registration());
  EXPECT_TRUE(waitForEvent("key"));
}

TEST_F(SecurityKeyPlugTest, AsksAllKeysAgainWhenOneGivesUp) {
  keys.plug("a");
  keys.plug("b");
  keys.at("b", kMakeCredential, "47");  // USER_ACTION_TIMEOUT
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  ASSERT_TRUE(keys.waitFor("cancelled a"));
  ASSERT_TRUE(keys.waitFor("waiting b"));
  keys.touch("b");
  keys.touch("b");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, WaitsLongerThanTheKey) {
  keys.plug("a", kTouched);
  keys.at("a", kMakeCredential, "47");  // USER_ACTION_TIMEOUT
  start(registration());
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, FailsAfterItsTimeout) {
  keys.plug("a");
  start(registration(), std::chrono::milliseconds(50));
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(SecurityKeyPlugTest, ACancelledKeyStopsWaiting) {
  keys.plug("a");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  securityKeys.cancel();
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  EXPECT_FALSE(registered || failed);
}

// U2F knows no cancellation.
TEST_F(SecurityKeyPlugTest, ACancelledU2fKeyIsReleased) {
  keys.plug("a", R"("u2f": true)");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  securityKeys.cancel();
  EXPECT_TRUE(keys.waitFor("closed a"));
}

TEST_F(SecurityKeyPlugTest, ANewCeremonyCancelsThePreviousOne) {
  keys.plug("a");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  start(registration());
  EXPECT_TRUE(keys.waitFor("cancelled a"));
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

// While the long request of the first is still being written.
TEST_F(SecurityKeyPlugTest, ACeremonyMayBeReplacedAtOnce) {
  keys.plug("a");
  Registration request = registration();
  request.excluded = std::vector<Bytes>(64, Bytes(1023, 1));
  start(request);
  start(request);
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.touch("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, AHangingKeyDoesNotBlock) {
  keys.plug("a");
  keys.at("a", kGetInfo, R"("hang")");
  start(registration());
  ASSERT_TRUE(keys.waitFor("hanging a"));
  securityKeys.cancel();
  ASSERT_TRUE(keys.waitFor("closed a"));
  keys.plug("a", kTouched);
  start(registration());
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

TEST_F(SecurityKeyPlugTest, EndsWhenTheUserRefusesAtTheKey) {
  keys.plug("a");
  start(registration());
  ASSERT_TRUE(keys.waitFor("waiting a"));
  keys.refuse("a");
  ASSERT_TRUE(waitForEnd());
  EXPECT_EQ(failed, KeyError::kNotAllowed);
}

TEST_F(SecurityKeyPlugTest, OpensAKeyAgainThatDoesNotReply) {
  keys.plug("a", kTouched);
  keys.at("a", kGetInfo, R"("hang")");
  start(registration());
  ASSERT_TRUE(keys.waitFor("hanging a"));
  ASSERT_TRUE(waitForEnd());
  EXPECT_TRUE(registered);
}

}  // namespace
