#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <clocale>
#include <cstdlib>
#include <ctime>
#include <string>
#include <thread>
#include <vector>

#include "logging/Helpers.h"
#include "tests/logging/FileTargetFixture.h"
#include "tests/support/Child.h"
#include "tests/support/Clock.h"

namespace {

using support::TimeZone;

class LineFormatTest : public FileTargetTest {
 protected:
  std::string lineOf(tarn::Log_Level level, const char* message) {
    std::string line;
    target.formatLog(1234567, level, "27403", "QSU", "Login", "Web", "1001", "", message, line);
    return line;
  }

  std::string timeText(unsigned long long timeMs) {
    char text[256];
    target.getTimeStr(timeMs, text);
    return text;
  }

  const std::string thread = target.getCurrentThreadID();
};

// Removes the milliseconds, such as ":567", from the text of a time.
std::string withoutMilliseconds(const std::string& timeText) {
  return timeText.substr(0, timeText.size() - 4);
}

TEST_F(LineFormatTest, FieldsAreInOrder) {
  const TimeZone zone("UTC");
  EXPECT_EQ(
      lineOf(tarn::ERROR, "Page load failed"),
      "01/01/70 00:20:34:567 | [ERROR] | 27403 | QSU | Login | Web | 1001 |  | " + thread + " | Page load failed");
}

TEST_F(LineFormatTest, FormatLogAppendsToTheOutput) {
  std::string line = "previous ";
  target.formatLog(0, tarn::INFO, "", "", "", "", "", "", "text", line);
  EXPECT_EQ(line.rfind("previous ", 0), 0u);
}

TEST_F(LineFormatTest, NullTextsAreEmpty) {
  const TimeZone zone("UTC");
  std::string line;
  target.formatLog(1000, tarn::INFO, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, line);
  EXPECT_EQ(line, "01/01/70 00:00:01:000 | [INFO] |  |  |  |  |  |  | " + thread + " | ");
}

TEST_F(LineFormatTest, LevelsHaveNames) {
  EXPECT_EQ(target.getLogLevelString(tarn::TRACE), "TRACE");
  EXPECT_EQ(target.getLogLevelString(tarn::DEBUG), "DEBUG");
  EXPECT_EQ(target.getLogLevelString(tarn::INFO), "INFO");
  EXPECT_EQ(target.getLogLevelString(tarn::WARN), "WARN");
  EXPECT_EQ(target.getLogLevelString(tarn::ERROR), "ERROR");
  EXPECT_EQ(target.getLogLevelString(tarn::FATAL), "FATAL");
  EXPECT_EQ(target.getLogLevelString(tarn::NONE), "NONE");
}

TEST_F(LineFormatTest, UnnamedLevelPrintsAsAll) {
  for (const int level : {0, -5, 9, 11, 35, 71, 2147483647}) {
    EXPECT_EQ(target.getLogLevelString(static_cast<tarn::Log_Level>(level)), "ALL") << level;
  }
}

TEST_F(LineFormatTest, MessageWithTokenBecomesAWarning) {
  const std::string line = lineOf(tarn::DEBUG, "a eyJhbGc.eyJzdWI b");
  EXPECT_NE(line.find("[WARN]"), std::string::npos);
  EXPECT_NE(line.find(" | Found access/device token. Log skipped."), std::string::npos);
  EXPECT_EQ(line.find("eyJ"), std::string::npos);
}

TEST_F(LineFormatTest, TokenNeedsSecondPartAfterFirst) {
  for (const char* message : {"x.eyJ", "eyJ", "eyJ and eyJ", ".eyJ then eyJ", "ey.J.eyJ", "EYJa.EYJb"}) {
    const std::string line = lineOf(tarn::INFO, message);
    EXPECT_NE(line.find(message), std::string::npos) << message;
    EXPECT_NE(line.find("[INFO]"), std::string::npos) << message;
  }
  EXPECT_NE(lineOf(tarn::INFO, "eyJ.eyJ").find("Log skipped."), std::string::npos);
  EXPECT_NE(lineOf(tarn::INFO, "x.eyJ a.eyJ").find("Log skipped."), std::string::npos);
}

TEST_F(LineFormatTest, TimeHasMilliseconds) {
  const TimeZone zone("UTC");
  EXPECT_EQ(timeText(1234567), "01/01/70 00:20:34:567");
  EXPECT_EQ(timeText(1234005), "01/01/70 00:20:34:005");
  EXPECT_EQ(timeText(1235000), "01/01/70 00:20:35:000");
}

TEST_F(LineFormatTest, TimeFollowsATimeZoneChange) {
  const TimeZone zone("UTC");
  EXPECT_EQ(timeText(1234567), "01/01/70 00:20:34:567");
  const TimeZone other("XYZ-9");
  EXPECT_EQ(timeText(1234567), "01/01/70 09:20:34:567");
}

TEST_F(LineFormatTest, TimeZeroMeansNow) {
  const TimeZone zone("UTC");
  const std::time_t before = support::currentSecond();
  const std::string text = timeText(0);
  const std::time_t after = support::currentSecond();
  std::vector<std::string> secondsBetween;
  for (std::time_t second = before; second <= after; ++second)
    secondsBetween.push_back(withoutMilliseconds(timeText(static_cast<unsigned long long>(second) * 1000)));
  EXPECT_THAT(secondsBetween, testing::Contains(withoutMilliseconds(text)));
}

TEST_F(LineFormatTest, TimeFollowsTheLocale) {
  const support::TemporaryFolder locales;
  const std::string make = "localedef -i de_DE -f UTF-8 '" + (locales / "de_DE.UTF-8") + "' >/dev/null 2>&1";
  if (std::system(make.c_str()) != 0) GTEST_SKIP() << "cannot create a locale";
  const std::string text = "01.01.1970 00:20:34:567";
  EXPECT_EQ(support::inChild([&] {
              ::setenv("TZ", "UTC", 1);
              timeText(1234567);
              ::setenv("LOCPATH", locales.path().c_str(), 1);
              if (std::setlocale(LC_ALL, "de_DE.UTF-8") == nullptr) return 2;
              return timeText(1234567) == text ? 0 : 1;
            }),
            0);
}

TEST_F(LineFormatTest, ThreadIdIsTheCallingThreads) {
  if (thread.empty()) GTEST_SKIP() << "no thread ids on this system version";
  const auto isOwnId = [this] {
    const std::string own = std::to_string(::syscall(SYS_gettid));
    return target.getCurrentThreadID() == own &&
           lineOf(tarn::INFO, "text").find(" | " + own + " | text") != std::string::npos;
  };
  EXPECT_TRUE(isOwnId());
  std::thread([&] { EXPECT_TRUE(isOwnId()); }).join();
  EXPECT_EQ(support::inChild([&] { return isOwnId() ? 0 : 1; }), 0);
}

TEST_F(LineFormatTest, ThreadIdIsEmptyBeforeVersion10Point6) {
  EXPECT_FALSE(tarn::hasThreadIds(10, 5));
  EXPECT_FALSE(tarn::hasThreadIds(6, 1));
  EXPECT_TRUE(tarn::hasThreadIds(10, 6));
  EXPECT_TRUE(tarn::hasThreadIds(6, 12));
  EXPECT_TRUE(tarn::hasThreadIds(11, 0));

  int major = 0;
  int minor = 0;
  int bugFix = 0;
  ASSERT_TRUE(tarn::utilGetCurrentOSVersion(major, minor, bugFix));
  EXPECT_EQ(thread.empty(), !tarn::hasThreadIds(major, minor));
}

}  // namespace
