// Checks that a message is redacted exactly if it may contain an access token.

#include <regex.h>

#include <cstddef>
#include <cstdint>
#include <string>

#include "fuzz/Fuzzing.h"
#include "logging/LogTargetDefault.h"
#include "platform/Path.h"

namespace {

// The rule as a POSIX regular expression, in which "." matches newlines too.
bool mayContainToken(const std::string& message) {
  static const regex_t token = [] {
    regex_t compiled;
    REQUIRE(::regcomp(&compiled, "eyJ.*\\.eyJ", REG_EXTENDED | REG_NOSUB) == 0);
    return compiled;
  }();
  return ::regexec(&token, message.c_str(), 0, nullptr, 0) == 0;
}

bool endsWith(const std::string& text, const std::string& ending) {
  return text.size() >= ending.size() && text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static tarn::LogTargetDefault target("fuzz");
  const std::string message = platform::untilNul(fuzz::textOf(data, size));
  const bool isRedacted = mayContainToken(message);

  std::string line = "before ";
  target.formatLog(1, tarn::DEBUG, "1", "2", "3", "4", "5", "6", message.c_str(), line);
  const std::string written = isRedacted ? "Found access/device token. Log skipped." : message;
  REQUIRE(line.compare(0, 7, "before ") == 0);
  REQUIRE(endsWith(line, " | " + written));

  const std::string level =
      isRedacted ? " | [WARN] | 1 | 2 | 3 | 4 | 5 | 6 | " : " | [DEBUG] | 1 | 2 | 3 | 4 | 5 | 6 | ";
  REQUIRE(line.find(level) < line.size() - written.size());
  return 0;
}
