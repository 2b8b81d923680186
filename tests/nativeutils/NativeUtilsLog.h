// Reads what the library has logged, for tests that link `svo::nativeutils`.

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

// A test whose process logs at every level. The log is open as long as the process lives: keep out of its folder, and
// let forked children leave abruptly.
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

  // The library's messages since the test began or `forget` was called, as "LEVEL message".
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

  // TIME | [LEVEL] |  | FAMILY | COMPONENT | … | THREAD | MESSAGE; "" for another component's line.
  static std::string messageOf(const std::string& line) {
    std::vector<std::string> fields;
    std::size_t from = 0;
    while (fields.size() < 9) {
      const std::size_t end = line.find(" | ", from);
      if (end == std::string::npos) return "";
      fields.push_back(line.substr(from, end - from));
      from = end + 3;
    }
    bool ours = false;
    for (std::size_t i = 2; i < fields.size(); ++i)
      ours = ours || fields[i] == "Native-Utils";
    if (!ours) return "";
    return fields[1].substr(1, fields[1].find(']') - 1) + " " + line.substr(from);
  }

  std::size_t seen_ = 0;
};

}  // namespace nativeutils_test
