// Fixtures with a file target in a temporary folder.

#pragma once

#include <gtest/gtest.h>

#include <cstdarg>
#include <string>
#include <vector>

#include "logging/LogTargetDefault.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"

class FileTargetTest : public testing::Test {
 protected:
  FileTargetTest() { target.setLogFile("Kelvo.log", folder.path().c_str()); }

  // Logs a message without arguments.
  void log(tarn::Log_Level level, const char* message, unsigned long long timeMs = 0) {
    target.writeLog(level, "27403", "QSU", "Login", "Web", "1001", "", message, nullptr, timeMs);
  }

  void logFormatted(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    target.writeLog(tarn::ERROR, "", "", "", "", "", "", format, &arguments, 0);
    va_end(arguments);
  }

  // Returns the text after the last " | " of the last line.
  std::string lastMessage() const {
    const std::vector<std::string> lines = support::linesOf(file);
    return lines.empty() ? "no line" : lines.back().substr(lines.back().rfind(" | ") + 3);
  }

  std::string lastLine() const {
    const std::vector<std::string> lines = support::linesOf(file);
    return lines.empty() ? "no line" : lines.back();
  }

  const std::string home = support::freshHome();
  const support::TemporaryFolder folder;
  const std::string file = folder / "Kelvo.log";
  tarn::LogTargetDefault target{"file-test"};
};

class RegisteredTargetTest : public FileTargetTest {
 protected:
  RegisteredTargetTest() { target.onRegisterTarget(); }
  ~RegisteredTargetTest() override { target.onUnregisterTarget(); }
};
