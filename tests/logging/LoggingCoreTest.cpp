#include "logging/LoggingCore.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <string>
#include <vector>

#include "logging/Logger.h"
#include "tests/logging/RecordingTarget.h"

namespace {

using testing::ElementsAre;

class LoggingCoreTest : public testing::Test {
 protected:
  ~LoggingCoreTest() override {
    core.unregisterTarget(&first);
    core.unregisterTarget(&second);
  }

  void log(const char* identifier, const char* text) {
    core.log(identifier, tarn::INFO, "session", "domain", "sub", "component", "one", "two", text, 0);
  }

  tarn::LoggingCore& core = *tarn::LoggingCore::getInstance();
  std::vector<RecordingTarget*> order;
  RecordingTarget first{"core-test", &order};
  RecordingTarget second{"core-test", &order};
};

TEST_F(LoggingCoreTest, UnknownIdentifierLogsNothing) {
  log("unknown", "text");
  log(nullptr, "text");
}

TEST_F(LoggingCoreTest, TargetReceivesAllArguments) {
  ASSERT_TRUE(core.registerTarget(&first));
  core.log("core-test", tarn::ERROR, "session", "domain", "sub", "component", "one", "two", "100%s", 1234);
  ASSERT_EQ(first.records.size(), 1u);
  EXPECT_EQ(first.records[0].level, tarn::ERROR);
  EXPECT_THAT(first.records[0].texts, ElementsAre("session", "domain", "sub", "component", "one", "two"));
  EXPECT_EQ(first.records[0].message, "100%s");
  EXPECT_EQ(first.records[0].timeMs, 1234u);
}

TEST_F(LoggingCoreTest, SecondRegistrationDoesNotAddTheTarget) {
  EXPECT_TRUE(core.registerTarget(&first));
  EXPECT_TRUE(core.registerTarget(&first));
  EXPECT_EQ(first.registrations, 2);
  EXPECT_EQ(first.getRefCount(), 1u);
  log("core-test", "text");
  EXPECT_EQ(first.records.size(), 1u);
}

TEST_F(LoggingCoreTest, FailedOnRegisterTargetPreventsRegistration) {
  first.result = false;
  EXPECT_FALSE(core.registerTarget(&first));
  EXPECT_EQ(first.getRefCount(), 0u);
  log("core-test", "text");
  EXPECT_TRUE(first.records.empty());
}

TEST_F(LoggingCoreTest, TargetsReceiveInRegistrationOrder) {
  core.registerTarget(&second);
  core.registerTarget(&first);
  log("core-test", "one");
  log("core-test", "two");
  EXPECT_THAT(order, ElementsAre(&second, &first, &second, &first));
}

TEST_F(LoggingCoreTest, NullTargetFails) {
  EXPECT_FALSE(core.registerTarget(nullptr));
  EXPECT_FALSE(core.unregisterTarget(nullptr));
}

TEST_F(LoggingCoreTest, UnregisteringFailsOnlyUnderKnownIdentifier) {
  core.registerTarget(&first);
  EXPECT_FALSE(core.unregisterTarget(&second));
  RecordingTarget unknown("unused-identifier");
  EXPECT_TRUE(core.unregisterTarget(&unknown));
}

TEST_F(LoggingCoreTest, UnregisterReturnsResultOfOnUnregisterTarget) {
  core.registerTarget(&first);
  first.result = false;
  EXPECT_FALSE(core.unregisterTarget(&first));
  EXPECT_EQ(first.unregistrations, 1);
  log("core-test", "text");
  EXPECT_TRUE(first.records.empty());
}

TEST_F(LoggingCoreTest, UnregisterSkipsCallbackWhileReferenced) {
  first.incrementRefCount();
  core.registerTarget(&first);
  EXPECT_TRUE(core.unregisterTarget(&first));
  EXPECT_EQ(first.unregistrations, 0);
}

TEST_F(LoggingCoreTest, IdentifierStaysKnownWithoutTargets) {
  core.registerTarget(&first);
  core.unregisterTarget(&first);
  EXPECT_FALSE(core.unregisterTarget(&first));
}

TEST_F(LoggingCoreTest, TwoTargetsReceiveTheArguments) {
  core.registerTarget(&first);
  core.registerTarget(&second);
  tarn::Logger logger("core-test");
  logger.info("%s %d %.1f %s", "text", 42, 2.5, "end");
  EXPECT_EQ(first.records.at(0).message, "text 42 2.5 end");
  EXPECT_EQ(second.records.at(0).message, "text 42 2.5 end");
}

TEST_F(LoggingCoreTest, SessionIdHasFiveDigits) {
  const std::string id = core.generateSessionId();
  ASSERT_EQ(id.size(), 5u);
  EXPECT_EQ(id.find_first_not_of("0123456789"), std::string::npos);
  EXPECT_NE(id[0], '0');
}

TEST_F(LoggingCoreTest, SessionIdsOfOneSecondAreEqual) {
  std::time_t before = 0;
  std::string one;
  std::string other;
  do {
    before = std::time(nullptr);
    one = core.generateSessionId();
    other = core.generateSessionId();
  } while (std::time(nullptr) != before);
  EXPECT_EQ(one, other);
}

}  // namespace
