// Checks invariants of the path functions. The input is a path, a newline, and the text to append.

#include "fuzz/Fuzzing.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "nativeutils/Strings.h"
#include "platform/Path.h"

namespace {

bool contains(const std::string& text, const char* piece) {
  return text.find(piece) != std::string::npos;
}

bool isNormalized(const std::string& path) {
  return path == "/" || (!contains(path, "//") && (path.empty() || path.back() != '/'));
}

std::string normalized(const std::string& path) {
  return platform::appendingPathComponent(path, "");
}

void requireComponents(const std::string& path) {
  const std::string last = platform::lastPathComponent(path);
  const std::string parent = platform::deletingLastPathComponent(path);
  REQUIRE(isNormalized(normalized(path)) && normalized(normalized(path)) == normalized(path));
  REQUIRE(last == "/" || !contains(last, "/"));
  REQUIRE(isNormalized(parent));
  REQUIRE(platform::appendingPathComponent(parent, last) == normalized(path));

  std::string removed = path;
  REQUIRE(utilRemoveFileSpec(removed) && removed == parent);
}

void requireExtension(const std::string& path) {
  const std::string extension = platform::pathExtension(path);
  const std::string rest = platform::deletingPathExtension(path);
  REQUIRE(!contains(extension, "/") && !contains(extension, "."));
  REQUIRE(isNormalized(rest));
  REQUIRE(normalized(path) == rest + "." + extension || (extension.empty() && normalized(path) == rest));
}

void requireAppended(const std::string& path, const std::string& component) {
  const std::string joined = platform::appendingPathComponent(path, component);
  REQUIRE(isNormalized(joined));
  if (component.find_first_not_of('/') == std::string::npos) return;
  REQUIRE(platform::lastPathComponent(joined) == platform::lastPathComponent(component));
  if (contains(normalized(component), "/")) return;
  REQUIRE(platform::deletingLastPathComponent(joined) == normalized(path));
}

void requireExtended(const std::string& path, const std::string& extension) {
  const auto extended = platform::appendingPathExtension(path, extension);
  const bool hasName = path.find_first_not_of('/') != std::string::npos;
  REQUIRE(extended.has_value() == (hasName && !contains(extension, "/")));
  if (!extended) return;
  REQUIRE(*extended == normalized(path) + "." + extension);
  if (contains(extension, ".")) return;
  REQUIRE(platform::pathExtension(*extended) == extension);
  REQUIRE(platform::deletingPathExtension(*extended) == normalized(path));
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
