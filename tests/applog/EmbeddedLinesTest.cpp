// Lines of the embedded user interface.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "applog/Logger.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;

using Fields = std::tuple<int, std::string, std::string>;

Fields split(const char* line) {
  tarn::Log_Level level = tarn::NONE;
  std::string component = "untouched", message = "untouched";
  Logger::getInstance()->parseMessageFromSwf(line, level, component, message);
  return {level, component, message};
}

// Runs `check` in a process of its own. The logger is a singleton: in this process it would stay for the later tests.
void inOwnProcess(const std::function<void()>& check) {
  EXPECT_EQ(support::inChild([&] {
              check();
              return testing::Test::HasFailure() ? 1 : 0;
            }),
            0);
}

TEST(EmbeddedLineTest, HasLevelComponentAndMessage) {
  inOwnProcess([] { EXPECT_EQ(split("INFO|||ui|||hello"), Fields(30, "ui", "hello")); });
}

TEST(EmbeddedLineTest, LevelWordsSelectLevels) {
  inOwnProcess([] {
    EXPECT_EQ(split("TRACE|||x|||y"), Fields(10, "x", "y"));
    EXPECT_EQ(split("DEBUG|||x|||y"), Fields(20, "x", "y"));
    EXPECT_EQ(split("INFO|||x|||y"), Fields(30, "x", "y"));
    EXPECT_EQ(split("WARN|||x|||y"), Fields(40, "x", "y"));
    EXPECT_EQ(split("ERROR|||x|||y"), Fields(50, "x", "y"));
    EXPECT_EQ(split("FATAL|||x|||y"), Fields(60, "x", "y"));
  });
}

TEST(EmbeddedLineTest, UnknownLevelWordMeansInfo) {
  inOwnProcess([] {
    EXPECT_EQ(split("debug|||x|||y"), Fields(30, "x", "y"));
    EXPECT_EQ(split(" ERROR|||x|||y"), Fields(30, "x", "y"));
    EXPECT_EQ(split("ERRORS|||x|||y"), Fields(30, "x", "y"));
    EXPECT_EQ(split("|||x|||y"), Fields(30, "x", "y"));
  });
}

TEST(EmbeddedLineTest, MessageMayContainTheSeparator) {
  inOwnProcess([] { EXPECT_EQ(split("ERROR|||ui|||a|||b"), Fields(50, "ui", "a|||b")); });
}

TEST(EmbeddedLineTest, FieldsMayBeEmpty) {
  inOwnProcess([] {
    EXPECT_EQ(split("DEBUG|||x|||"), Fields(20, "x", ""));
    EXPECT_EQ(split("DEBUG||||||y"), Fields(20, "", "y"));
    EXPECT_EQ(split("||||||"), Fields(30, "", ""));
  });
}

TEST(EmbeddedLineTest, ExtraBarBelongsToTheNextField) {
  inOwnProcess([] { EXPECT_EQ(split("WARN||||x|||y"), Fields(40, "|x", "y")); });
}

TEST(EmbeddedLineTest, OneSeparatorStartsMessageAtThirdCharacter) {
  inOwnProcess([] {
    EXPECT_EQ(split("WARN|||only"), Fields(40, "only", "RN|||only"));
    EXPECT_EQ(split("|||"), Fields(30, "", "|"));
  });
}

TEST(EmbeddedLineTest, NoSeparatorStartsBothFieldsAtThirdCharacter) {
  inOwnProcess([] {
    EXPECT_EQ(split("plain text"), Fields(30, "ain text", "ain text"));
    EXPECT_EQ(split("FATAL"), Fields(60, "TAL", "TAL"));
    EXPECT_EQ(split("ab"), Fields(30, "", ""));
  });
}

TEST(EmbeddedLineTest, ShortLineThrowsOutOfRange) {
  inOwnProcess([] {
    EXPECT_THROW(split(""), std::out_of_range);
    EXPECT_THROW(split("a"), std::out_of_range);
  });
}

class EmbeddedLineLogTest : public testing::Test {
 protected:
  // Logs `embedded` in a process of its own, because the logger is a singleton, and returns the last line of the log.
  std::string lastLineAfter(int verbosity, const std::string& embedded) {
    const int status = support::inChild([&] {
      Logger::getInstance()->setLogLevel(static_cast<Log_Level>(verbosity), "SVO", "session");
      Logger::getInstance()->logSimpleMessage(embedded.c_str());
      return 0;
    });
    EXPECT_EQ(status, 0);
    const std::vector<std::string> lines = support::linesOf(home + "/Library/Logs/Kelvo.log");
    return lines.empty() ? "" : lines.back();
  }

  const std::string home = support::freshHome();
};

TEST_F(EmbeddedLineLogTest, LineHasLoggerTextsAndOwnComponent) {
  EXPECT_THAT(lastLineAfter(4, "WARN|||ui|||hello"), HasSubstr("[WARN] | session | QSU | SVO | ui |  |  | "));
}

TEST_F(EmbeddedLineLogTest, MessageIsNotFormatted) {
  EXPECT_THAT(lastLineAfter(4, "INFO|||ui|||100 %s %n"), EndsWith(" | 100 %s %n"));
}

TEST_F(EmbeddedLineLogTest, LongMessageIsNotCut) {
  const std::string message(5000, 'm');
  EXPECT_THAT(lastLineAfter(4, "INFO|||ui|||" + message), EndsWith(" | " + message));
}

TEST_F(EmbeddedLineLogTest, TargetLevelFiltersLines) {
  EXPECT_THAT(lastLineAfter(4, "DEBUG|||ui|||hidden"), EndsWith("Logging Level verbosity Set  to 4"));
}

// A new logger has no enabled level, and its target has level INFO.
TEST_F(EmbeddedLineLogTest, DisabledLevelDoesNotFilterLines) {
  const int status = support::inChild([] {
    Logger::getInstance()->logInfo("SVO", "dropped");
    Logger::getInstance()->logSimpleMessage("INFO|||ui|||written");
    return 0;
  });
  EXPECT_EQ(status, 0);
  EXPECT_THAT(support::linesOf(home + "/Library/Logs/Kelvo.log"), ElementsAre(EndsWith(" | written")));
}

TEST_F(EmbeddedLineLogTest, TokenIsRedacted) {
  EXPECT_THAT(lastLineAfter(4, "INFO|||ui|||eyJhbGci.eyJzdWIi.x"), EndsWith("Found access/device token. Log skipped."));
}

}  // namespace
