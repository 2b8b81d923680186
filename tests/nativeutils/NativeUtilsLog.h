// Reads the messages that the library has logged.

#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

#include "applog/Logger.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"

namespace nativeutils_test {

// Enables all log levels in the test's process.
//
// - The log stays open until the process ends: tests must not remove its folder.
// - Forked children must leave through `exec` or `_exit`.
class LoggedTest : public testing::Test {
 protected:
  LoggedTest() {
    static const bool started = [] {
      Logger::getInstance()->setLogLevel(Log_Level_Trace, "Native-Utils-Test", nullptr);
      return true;
    }();
    (void)started;
    seen_ = lines().size();
  }

  // Returns the library's messages since the test began or `forget` was called, as "LEVEL message".
  //   {"FATAL Error Src file (/x) does not exits."}
  std::vector<std::string> logged() const {
    std::vector<std::string> messages;
    const std::vector<std::string> all = lines();
    for (std::size_t i = seen_; i < all.size(); ++i) {
      const std::string message = messageOf(all[i]);
      if (!message.empty()) messages.push_back(message);
    }
    return messages;
  }

  void forget() { seen_ = lines().size(); }

 private:
  static std::vector<std::string> lines() { return support::linesOf(support::ownLogFolder() + "/Kelvo.log"); }

  // Parses "TIME | [LEVEL] |  | FAMILY | COMPONENT | … | THREAD | MESSAGE". Returns "" for another component's line.
  static std::string messageOf(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t from = 0;
    while (fields.size() < 9) {
      const std::size_t end = line.find(" | ", from);
      if (end == std::string::npos) return "";
      fields.push_back(line.substr(from, end - from));
      from = end + 3;
    }
    bool isOurs = false;
    for (std::size_t i = 2; i < fields.size(); ++i)
      isOurs = isOurs || fields[i] == "Native-Utils";
    if (!isOurs) return "";
    return fields[1].substr(1, fields[1].find(']') - 1) + " " + line.substr(from);
  }

  std::size_t seen_ = 0;
};

}  // namespace nativeutils_test
