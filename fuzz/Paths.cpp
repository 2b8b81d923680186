// What holds of path strings, whatever they hold. The input is a path, a newline and what is appended.

#include "fuzz/Fuzzing.h"

#include <cstdint>

#include "nativeutils/Strings.h"
#include "platform/Path.h"

namespace {

bool contains(const std::string& text, const char* piece) {
  return text.find(piece) != std::string::npos;
}

bool isTidy(const std::string& path) {
  return path == "/" || (!contains(path, "//") && (path.empty() || path.back() != '/'));
}

std::string tidied(const std::string& path) {
  return platform::appendingPathComponent(path, "");
}

void requireComponents(const std::string& path) {
  const std::string last = platform::lastPathComponent(path);
  const std::string parent = platform::deletingLastPathComponent(path);
  REQUIRE(isTidy(tidied(path)) && tidied(tidied(path)) == tidied(path));
  REQUIRE(last == "/" || !contains(last, "/"));
  REQUIRE(isTidy(parent));
  REQUIRE(platform::appendingPathComponent(parent, last) == tidied(path));

  std::string removed = path;
  REQUIRE(utilRemoveFileSpec(removed) && removed == parent);
}

void requireExtension(const std::string& path) {
  const std::string extension = platform::pathExtension(path);
  const std::string rest = platform::deletingPathExtension(path);
  REQUIRE(!contains(extension, "/") && !contains(extension, "."));
  REQUIRE(isTidy(rest));
  REQUIRE(tidied(path) == rest + "." + extension || (extension.empty() && tidied(path) == rest));
}

void requireAppended(const std::string& path, const std::string& component) {
  const std::string joined = platform::appendingPathComponent(path, component);
  REQUIRE(isTidy(joined));
  if (component.find_first_not_of('/') == std::string::npos) return;
  REQUIRE(platform::lastPathComponent(joined) == platform::lastPathComponent(component));
  if (contains(tidied(component), "/")) return;
  REQUIRE(platform::deletingLastPathComponent(joined) == tidied(path));
}

void requireExtended(const std::string& path, const std::string& extension) {
  const auto extended = platform::appendingPathExtension(path, extension);
  const bool hasName = path.find_first_not_of('/') != std::string::npos;
  REQUIRE(extended.has_value() == (hasName && !contains(extension, "/")));
  if (!extended) return;
  REQUIRE(*extended == tidied(path) + "." + extension);
  if (contains(extension, ".")) return;
  REQUIRE(platform::pathExtension(*extended) == extension);
  REQUIRE(platform::deletingPathExtension(*extended) == tidied(path));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto [path, piece] = fuzz::twoTextsOf(data, size);
  requireComponents(path);
  requireExtension(path);
  requireAppended(path, piece);
  requireExtended(path, piece);
  return 0;
}
