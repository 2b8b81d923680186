#include "logging/Logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include "logging/LoggingCore.h"
#include "tests/logging/RecordingTarget.h"

namespace {

using testing::ElementsAre;

const char* const kNoFormat = nullptr;

class LoggerTest : public testing::Test {
 protected:
  LoggerTest() { tarn::LoggingCore::getInstance()->registerTarget(&target); }
  ~LoggerTest() override { tarn::LoggingCore::getInstance()->unregisterTarget(&target); }

  const Record& last() const { return target.records.back(); }

  RecordingTarget target{"logger-test"};
  tarn::Logger logger{"logger-test", "27403", "QSU", "Login", "Web"};
};

TEST_F(LoggerTest, MessagesHaveTheFourTexts) {
  logger.info("text");
  EXPECT_THAT(last().texts, ElementsAre("27403", "QSU", "Login", "Web", "", ""));
}

TEST_F(LoggerTest, LevelFunctionsSendTheirLevel) {
  logger.trace("text");
  logger.debug("text");
  logger.info("text");
  logger.warn("1", "text");
  logger.error("2", "text");
  logger.fatal("3", "text");
  std::vector<int> levels;
  for (const Record& record : target.records)
    levels.push_back(record.level);
  EXPECT_THAT(levels, ElementsAre(10, 20, 30, 40, 50, 60));
}

TEST_F(LoggerTest, CodeIsTheFirstExtraText) {
  logger.error("1001", "failed %s", "twice");
  EXPECT_THAT(last().texts, ElementsAre("27403", "QSU", "Login", "Web", "1001", ""));
  EXPECT_EQ(last().message, "failed twice");
}

TEST_F(LoggerTest, LogPassesLevelAndExtraTexts) {
  logger.log(static_cast<tarn::Log_Level>(33), "one", "two", "%d", 7);
  EXPECT_EQ(last().level, 33);
  EXPECT_THAT(last().texts, ElementsAre("27403", "QSU", "Login", "Web", "one", "two"));
}

TEST_F(LoggerTest, MessageTimeIsZero) {
  logger.info("text");
  logger.error("1001", "text");
  logger.log(tarn::INFO, "one", "two", "text");
  for (const Record& record : target.records)
    EXPECT_EQ(record.timeMs, 0u);
  EXPECT_EQ(target.records.size(), 3u);
}

TEST_F(LoggerTest, NullCodesAndExtrasAreEmpty) {
  logger.warn(nullptr, "text");
  logger.log(tarn::INFO, nullptr, nullptr, "text");
  for (const Record& record : target.records) {
    EXPECT_THAT(record.texts, ElementsAre("27403", "QSU", "Login", "Web", "", ""));
  }
}

TEST_F(LoggerTest, NullFormatWritesNothing) {
  logger.trace(kNoFormat);
  logger.debug(kNoFormat);
  logger.info(kNoFormat);
  logger.warn("1", kNoFormat);
  logger.error("1", kNoFormat);
  logger.fatal("1", kNoFormat);
  logger.log(tarn::FATAL, "1", "2", kNoFormat);
  EXPECT_TRUE(target.records.empty());
}

TEST_F(LoggerTest, ConstructorTreatsNullAsEmpty) {
  const tarn::Logger empty(nullptr, nullptr, nullptr, nullptr, nullptr);
  EXPECT_EQ(empty.getTargetIdentifier(), "");
  EXPECT_EQ(empty.getSessionId(), "");
  EXPECT_EQ(empty.getComponent(), "");
}

TEST_F(LoggerTest, SettersIgnoreNull) {
  EXPECT_FALSE(logger.setTargetIdentifier(nullptr));
  EXPECT_FALSE(logger.setSessionId(nullptr));
  EXPECT_FALSE(logger.setDomain(nullptr));
  EXPECT_FALSE(logger.setSubDomain(nullptr));
  EXPECT_FALSE(logger.setComponent(nullptr));
  EXPECT_EQ(logger.getSessionId(), "27403");
  EXPECT_TRUE(logger.setSessionId("1"));
  EXPECT_TRUE(logger.setDomain("2"));
  EXPECT_TRUE(logger.setSubDomain("3"));
  EXPECT_TRUE(logger.setComponent("4"));
  logger.info("text");
  EXPECT_THAT(last().texts, ElementsAre("1", "2", "3", "4", "", ""));
}

TEST_F(LoggerTest, IdentifierSelectsTheTargets) {
  EXPECT_TRUE(logger.setTargetIdentifier("elsewhere"));
  logger.info("text");
  EXPECT_TRUE(target.records.empty());
}

}  // namespace
