// Checks the result message: escaping is reversible and leaves no markup characters.

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "app/ResultChannel.h"
#include "fuzz/Fuzzing.h"

namespace {

struct Entity {
  const char* name;
  char character;
};

constexpr std::array<Entity, 5> kEntities = {
    {{"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}}};

std::string unescaped(const std::string& text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] != '&') {
      plain += text[i++];
      continue;
    }
    bool isKnown = false;
    for (const Entity& entity : kEntities) {
      const std::string_view name = entity.name;
      if (text.compare(i, name.size(), name) != 0) continue;
      plain += entity.character;
      i += name.size();
      isKnown = true;
      break;
    }
    REQUIRE(isKnown);
  }
  return plain;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string url = fuzz::textOf(data, size);
  std::string escaped = url;
  EncodeXMLData(escaped);
  REQUIRE(escaped.find_first_of("\"'<>") == std::string::npos);
  REQUIRE(unescaped(escaped) == url);

  for (const int code : {0, 1, 2, 3, 255, -1}) {
    std::string argument = url;
    const std::string message = ConstructOutputString(code, argument);
    REQUIRE(argument == escaped);
    if (code == kSignedIn) {
      REQUIRE(message == "<result><URL>" + escaped + "</URL></result>");
    } else {
      const int shown = code == kWindowClosed || code == kLoadFailed ? code : 255;
      REQUIRE(message == "<errorNo><error>" + std::to_string(shown) + "</error></errorNo>");
    }
  }
  return 0;
}
