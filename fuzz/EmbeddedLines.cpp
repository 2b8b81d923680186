// Compares the parsing of log lines of the embedded UI with a simple implementation.

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>

#include "applog/Logger.h"
#include "fuzz/Fuzzing.h"
#include "platform/Path.h"

namespace {

struct Fields {
  tarn::Log_Level level;
  std::string component;
  std::string message;
};

tarn::Log_Level levelOf(const std::string& word) {
  static const std::map<std::string, tarn::Log_Level> levels = {{"TRACE", tarn::TRACE}, {"DEBUG", tarn::DEBUG},
                                                                {"INFO", tarn::INFO},   {"WARN", tarn::WARN},
                                                                {"ERROR", tarn::ERROR}, {"FATAL", tarn::FATAL}};
  const auto level = levels.find(word);
  return level == levels.end() ? tarn::INFO : level->second;
}

// Returns no value for a line that is too short to be split.
std::optional<Fields> parseSimply(const std::string& line) {
  const std::size_t first = line.find("|||");
  if (first == std::string::npos) {
    // The second search starts at the third character and finds no separator either.
    if (line.size() < 2) return std::nullopt;
    return Fields{levelOf(line), line.substr(2), line.substr(2)};
  }
  const std::string word = line.substr(0, first);
  const std::string rest = line.substr(first + 3);
  const std::size_t second = rest.find("|||");
  if (second == std::string::npos) return Fields{levelOf(word), rest, line.substr(2)};
  return Fields{levelOf(word), rest.substr(0, second), rest.substr(second + 3)};
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string line = platform::untilNul(fuzz::textOf(data, size));
  const std::optional<Fields> expected = parseSimply(line);
  Fields fields{tarn::NONE, "previous", "previous"};
  bool isSplit = true;
  try {
    Logger::getInstance()->parseMessageFromSwf(line.c_str(), fields.level, fields.component, fields.message);
  } catch (const std::out_of_range&) {
    isSplit = false;
  }
  REQUIRE(isSplit == expected.has_value());
  REQUIRE(fields.level == (isSplit ? expected->level : tarn::NONE));
  REQUIRE(fields.component == (isSplit ? expected->component : "previous"));
  REQUIRE(fields.message == (isSplit ? expected->message : "previous"));
  return 0;
}
