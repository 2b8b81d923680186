#include "applog/Logger.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "logging/LoggingCore.h"
#include "tests/applog/LoggerFixture.h"
#include "tests/logging/RecordingTarget.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"

namespace {

using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kFlagNumber = 2147483547;

// Returns the fields between the time and the thread id, and the message.
std::string withoutTimeAndThread(const std::string& line) {
  const std::size_t afterTime = line.find(" | ") + 3;
  const std::size_t message = line.rfind(" | ");
  const std::size_t thread = line.rfind(" | ", message - 1);
  return line.substr(afterTime, thread - afterTime) + line.substr(message);
}

TEST_F(LoggerTest, CreatesLogFolderWithMode0700) {
  linesAfter([](Logger&) {});
  EXPECT_EQ(support::modeOf(home + "/Library"), 0700u);
  EXPECT_EQ(support::modeOf(home + "/Library/Logs"), 0700u);
}

TEST_F(LoggerTest, OpensALogThatCouldNotBeOpened) {
  support::writeFile(home + "/Library", "in place of the folder");
  const auto lines = linesAfter([this](Logger& logger) {
    std::filesystem::remove(home + "/Library");
    logger.setLogLevel(level(4), "SVO", nullptr);
  });
  EXPECT_THAT(lines, SizeIs(2));
}

TEST_F(LoggerTest, WritesNothingBeforeSetLogLevel) {
  EXPECT_THAT(linesAfter(logEachLevel), IsEmpty());
}

TEST_F(LoggerTest, SetLogLevelLogsBuildAndLevel) {
  const auto lines = linesAfter([](Logger& logger) { logger.setLogLevel(level(4), "SVO", nullptr); });
  ASSERT_THAT(lines, SizeIs(2));
  EXPECT_EQ(withoutTimeAndThread(lines[0]), "[INFO] |  | QSU | SVO | SVO |  |  | Build Version - 9.0.0.121");
  EXPECT_EQ(withoutTimeAndThread(lines[1]), "[INFO] |  | QSU | SVO | SVO |  |  | Logging Level verbosity Set  to 4");
}

TEST_F(LoggerTest, EachVerbosityWritesItsLevelAndAbove) {
  for (int verbosity = 1; verbosity <= 6; ++verbosity) {
    support::freshHome();
    std::vector<std::string> messages;
    for (const std::string& line : linesAfter([&](Logger& logger) {
           logger.setLogLevel(level(verbosity), nullptr, nullptr);
           logEachLevel(logger);
         })) {
      messages.push_back(line.substr(line.rfind(' ') + 1));
    }
    std::vector<std::string> expected;
    for (int severity = verbosity; severity >= 1; --severity)
      expected.push_back(std::to_string(severity));
    EXPECT_EQ(messages, expected) << verbosity;
  }
}

TEST_F(LoggerTest, LevelFunctionsPrintTheirLevel) {
  std::string levels;
  for (const std::string& line : linesAt(6, logEachLevel)) {
    levels += line.substr(line.find('['), line.find(']') + 1 - line.find('['));
  }
  EXPECT_EQ(levels, "[TRACE][DEBUG][INFO][WARN][ERROR][FATAL]");
}

TEST_F(LoggerTest, LineHasContextTextsInOrder) {
  const auto lines = linesAt(4, [](Logger& logger) { logger.logInfo("Native-Utils", "text"); });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(withoutTimeAndThread(lines[0]), "[INFO] |  | QSU | SVO | Native-Utils |  |  | text");
}

TEST_F(LoggerTest, ContextIsTheFirstText) {
  const auto lines = linesAfter([](Logger& logger) {
    logger.setLogLevel(level(4), "SVO", "context");
    logger.setLogLevel(level(4), nullptr, nullptr);
    logger.logInfo("SVO", "text");
  });
  ASSERT_THAT(lines, testing::Not(IsEmpty()));
  EXPECT_EQ(withoutTimeAndThread(lines.back()), "[INFO] | context | QSU | SVO | SVO |  |  | text");
}

TEST_F(LoggerTest, NullComponentIsNotLoggedOrStored) {
  const auto lines = linesAfter([](Logger& logger) {
    logger.setLogLevel(level(4), nullptr, nullptr);
    logger.logInfo("SVO", "text");
  });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(withoutTimeAndThread(lines[0]), "[INFO] |  | QSU |  | SVO |  |  | text");
}

TEST_F(LoggerTest, TargetFiltersLevelsEnabledEarlier) {
  const auto lines = linesAfter([](Logger& logger) {
    logger.setLogLevel(level(6), nullptr, nullptr);
    logger.setLogLevel(level(1), nullptr, nullptr);
    EXPECT_EQ(logger.getCurrentLogLevel(), tarn::FATAL);
    logEachLevel(logger);
  });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], HasSubstr("[FATAL]"));
}

// A second target of the same identifier receives every enabled message: only the first filters by its level.
class EnabledLevelsTest : public LoggerTest {
 protected:
  void checkRecords(const std::function<void(Logger&)>& body, const std::function<void(std::vector<Record>&)>& check) {
    linesAfter([&](Logger& logger) {
      RecordingTarget recorder("QSU");
      tarn::LoggingCore::getInstance()->registerTarget(&recorder);
      body(logger);
      check(recorder.records);
      tarn::LoggingCore::getInstance()->unregisterTarget(&recorder);
    });
  }
};

TEST_F(EnabledLevelsTest, EnabledLevelsStayEnabled) {
  checkRecords(
      [](Logger& logger) {
        logger.setLogLevel(level(6), nullptr, nullptr);
        logger.setLogLevel(level(1), nullptr, nullptr);
        logEachLevel(logger);
      },
      [](std::vector<Record>& records) { EXPECT_THAT(records, SizeIs(6)); });
}

TEST_F(EnabledLevelsTest, MessageTimeIsZero) {
  checkRecords(
      [](Logger& logger) {
        logger.setLogLevel(level(6), "SVO", nullptr);
        logEachLevel(logger);
        logger.logSimpleMessage("INFO|||ui|||text");
      },
      [](std::vector<Record>& records) {
        EXPECT_THAT(records, SizeIs(9));
        EXPECT_THAT(records, testing::Each(testing::Field(&Record::timeMs, 0u)));
      });
}

TEST_F(LoggerTest, VerbosityOutsideTheRangeKeepsTheLevel) {
  for (const int unknown : {-1, 0, 7, 8}) {
    support::freshHome();
    const auto lines = linesAfter([&](Logger& logger) {
      logger.setLogLevel(level(unknown), "SVO", nullptr);
      EXPECT_EQ(logger.getCurrentLogLevel(), tarn::INFO) << unknown;
      logEachLevel(logger);
    });
    ASSERT_THAT(lines, SizeIs(6)) << unknown;
    EXPECT_THAT(lines[1], EndsWith("Logging Level verbosity Set  to " + std::to_string(unknown)));
  }
}

TEST_F(LoggerTest, UnknownVerbosityKeepsTheLevelAndIsLogged) {
  const auto lines = linesAfter([](Logger& logger) {
    logger.setLogLevel(level(3), nullptr, nullptr);
    logger.setLogLevel(level(9), nullptr, nullptr);
    EXPECT_EQ(logger.getCurrentLogLevel(), tarn::WARN);
  });
  const auto announced = linesAfter([](Logger& logger) { logger.setLogLevel(level(9), "SVO", nullptr); });
  EXPECT_THAT(lines, IsEmpty());
  ASSERT_THAT(announced, SizeIs(2));
  EXPECT_THAT(announced.back(), EndsWith("Logging Level verbosity Set  to 9"));
}

TEST_F(LoggerTest, FlagFileRaisesTheVerbosity) {
  std::filesystem::create_directories(home + "/Library/Logs");
  support::writeFile(home + "/Library/Logs/Kelvo.trace", "");
  EXPECT_THAT(linesAt(4, logEachLevel), SizeIs(6));
}

TEST_F(LoggerTest, MessageIsCutTo1022Characters) {
  const std::string text(2000, 'x');
  const auto lines = linesAt(4, [&](Logger& logger) { logger.logInfo("SVO", "%s", text.c_str()); });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(" | " + std::string(1022, 'x')));
}

TEST_F(LoggerTest, MessageWithTokenIsReplaced) {
  const auto lines = linesAt(4, [](Logger& logger) { logger.logError("SVO", "token %s.%s", "eyJhbGc", "eyJzdWI"); });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(withoutTimeAndThread(lines[0]),
            "[WARN] |  | QSU | SVO | SVO |  |  | Found access/device token. Log skipped.");
}

TEST_F(LoggerTest, FormattedTextIsNotFormattedAgain) {
  const auto lines = linesAt(4, [](Logger& logger) { logger.logInfo("SVO", "%s", "100%s%d%n"); });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_THAT(lines[0], EndsWith(" | 100%s%d%n"));
}

TEST_F(LoggerTest, SendMessageDoesNotCutLongText) {
  const std::string text(20000, 'x');
  const auto lines = linesAt(4, [&](Logger& logger) {
    logger.sendMessageToTARNLogger(tarn::INFO, "1", "2", "3", "4", "5", "6", text.c_str());
  });
  ASSERT_THAT(lines, SizeIs(1));
  EXPECT_EQ(withoutTimeAndThread(lines[0]), "[INFO] | 1 | 2 | 3 | 4 | 5 | 6 | " + text);
}

TEST_F(LoggerTest, LeavesNoSemaphoreSetBehind) {
  linesAt(4, logEachLevel);
  EXPECT_EQ(support::setOf(home, kFlagNumber), -1);
  EXPECT_EQ(support::setOf(file, 11), -1);
}

// With the count set to 0, the detach of the mutex blocks, so that the destructor stops there.
TEST_F(LoggerTest, FinalizesTheMutexBeforeTheTarget) {
  const support::Shared<std::atomic<bool>> mayEnd;
  support::Child child(
      [&] {
        Logger::getInstance();
        return support::becomesTrue([&] { return mayEnd->load(); }) ? 0 : 1;
      },
      support::Child::Ending::kOrderly);
  ASSERT_TRUE(support::becomesTrue([&] { return support::valueOf(support::setOf(file, 11), 1) == 1; }));
  const int mutex = support::setOf(home, kFlagNumber);
  support::setValueOf(mutex, 0, 0);
  *mayEnd = true;
  EXPECT_TRUE(support::becomesTrue([&] { return support::waitersOn(mutex, 0) == 1; }));
  EXPECT_EQ(support::valueOf(support::setOf(file, 11), 0), 1);
  support::setValueOf(mutex, 0, 1);
  EXPECT_EQ(child.wait(), 0);
  EXPECT_EQ(support::setOf(file, 11), -1);
}

TEST_F(LoggerTest, WritesWhileHoldingTheUserMutex) {
  OVNLoggingFileOperationFlag flag;
  flag.semid = -1;
  flag.held = false;
  ASSERT_TRUE(flag.createFlag());
  ASSERT_TRUE(flag.startFileOperation());
  support::Child writer(
      [] {
        Logger::getInstance()->setLogLevel(level(4), "SVO", nullptr);
        return 0;
      },
      support::Child::Ending::kOrderly);
  EXPECT_TRUE(support::becomesTrue([&] { return support::waitersOn(flag.semid, 1) == 1; }));
  EXPECT_THAT(support::linesOf(file), IsEmpty());
  flag.endFileOperation();
  EXPECT_EQ(writer.wait(), 0);
  EXPECT_THAT(support::linesOf(file), SizeIs(2));
  flag.finalizeFlag();
}

TEST_F(LoggerTest, MissingHomeDropsAllMessages) {
  const support::PasswordDatabase empty("");
  EXPECT_THAT(linesAt(4, logEachLevel), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists("Kelvo.log"));
}

TEST_F(LoggerTest, MissingLogFolderDropsAllMessages) {
  support::writeFile(home + "/Library", "a file");
  EXPECT_THAT(linesAt(4, logEachLevel), IsEmpty());
  EXPECT_FALSE(std::filesystem::exists("Kelvo.log"));
}

TEST_F(LoggerTest, PipeAtLogPathDoesNotBlock) {
  std::filesystem::create_directories(home + "/Library/Logs");
  ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
  EXPECT_EQ(support::inChild([] {
              Logger::getInstance()->setLogLevel(level(4), "SVO", nullptr);
              return 0;
            }),
            0);
}

TEST_F(LoggerTest, FolderAtLogPathIsIgnored) {
  std::filesystem::create_directories(file);
  EXPECT_EQ(support::inChild([] {
              Logger::getInstance()->setLogLevel(level(4), "SVO", nullptr);
              return 0;
            }),
            0);
}

TEST_F(LoggerTest, TwoThreadsMayLog) {
  const auto lines = linesAt(4, [](Logger& logger) {
    const auto write = [&](const char* name) {
      for (int i = 0; i < 1000; ++i)
        logger.logInfo(name, "%d", i);
    };
    std::thread one(write, "one");
    std::thread other(write, "other");
    one.join();
    other.join();
  });
  EXPECT_THAT(lines, SizeIs(2000));
}

TEST_F(LoggerTest, SmallFunctionsReturnTheirDocumentedResults) {
  linesAfter([](Logger& logger) {
    std::string copy;
    char buffer[16] = "previous";
    EXPECT_TRUE(logger.finalize());
    EXPECT_TRUE(logger.GetNativeStringFromString("text", copy));
    EXPECT_EQ(copy, "text");
    EXPECT_EQ(logger.getLogMessage(buffer, sizeof buffer, "text", nullptr), 0);
    EXPECT_STREQ(buffer, "previous");
    EXPECT_EQ(Logger::getInstance(), &logger);
  });
}

TEST_F(LoggerTest, GetCurrentTimeIsCtimeWithoutNewline) {
  std::time_t before = 0;
  std::string text;
  std::string expected;
  do {
    before = std::time(nullptr);
    text = Logger::getCurrentTime();
    expected = std::ctime(&before);
  } while (std::time(nullptr) != before);
  EXPECT_EQ(text + "\n", expected);
}

}  // namespace
