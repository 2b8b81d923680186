// Runs the application logger in a process of its own, because it is a singleton, and reads what it wrote.

#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include "applog/Logger.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

inline Log_Level level(int verbosity) {
  return static_cast<Log_Level>(verbosity);
}

class LoggerTest : public testing::Test {
 protected:
  // Runs `body` in a process of its own, because the logger is a singleton, and returns the lines of the log.
  std::vector<std::string> linesAfter(const std::function<void(Logger&)>& body) {
    const int status = support::inChild([&] {
      body(*Logger::getInstance());
      return HasFailure() ? 1 : 0;
    });
    EXPECT_EQ(status, 0);
    return support::linesOf(file);
  }

  // The same after `setLogLevel`, without the two lines that it logs.
  std::vector<std::string> linesAt(int verbosity, const std::function<void(Logger&)>& body) {
    std::vector<std::string> lines = linesAfter([&](Logger& logger) {
      logger.setLogLevel(level(verbosity), "SVO", nullptr);
      body(logger);
    });
    lines.erase(lines.begin(), lines.begin() + std::min<std::ptrdiff_t>(2, static_cast<std::ptrdiff_t>(lines.size())));
    return lines;
  }

  static void logEachLevel(Logger& logger) {
    logger.logTrace("SVO", "message %d", 6);
    logger.logDebug("SVO", "message %d", 5);
    logger.logInfo("SVO", "message %d", 4);
    logger.logWarn("SVO", "message %d", 3);
    logger.logError("SVO", "message %d", 2);
    logger.logFatal("SVO", "message %d", 1);
  }

  const std::string home = support::freshHome();
  const std::string file = home + "/Library/Logs/Kelvo.log";
};
