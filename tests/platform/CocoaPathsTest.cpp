// Compares platform/Path.h with the NSString methods of GNUstep, for all short strings of a small alphabet.
//
// Each known difference is listed with its reason and must occur at least once.

#include "tests/platform/CocoaPaths.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "nativeutils/Strings.h"
#include "platform/Path.h"

namespace {

using Result = std::optional<std::string>;

struct Arguments {
  std::string path;
  std::string argument;  // "" for functions with one argument
};

// A known difference of the peer.
struct Difference {
  const char* reason;
  std::function<bool(const Arguments&, const Result& ours, const Result& peers)> applies;
  int count = 0;
};

bool beginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

// Removes repeated and trailing slashes.
std::string withoutExtraSlashes(const std::string& path) {
  return platform::appendingPathComponent(path, "");
}

Difference slashesAreKept() {
  return {"extra slashes are kept", [](const Arguments&, const Result& ours, const Result& peers) {
            return ours && peers && withoutExtraSlashes(*peers) == ours;
          }};
}

Difference tildeIsRoot() {
  return {"a leading ~ is a root like /",
          [](const Arguments& arguments, const Result&, const Result&) { return beginsWith(arguments.path, "~"); }};
}

Difference hiddenNameIsExtension() {
  return {"in a folder, a name that begins with its only dot is an extension",
          [](const Arguments& arguments, const Result& ours, const Result& peers) {
            const std::string name = platform::lastPathComponent(arguments.path);
            return name.rfind('.') == 0 && withoutExtraSlashes(*peers + name) == ours;
          }};
}

Difference namelessIsKept() {
  return {"a path without a name is unchanged",
          [](const Arguments& arguments, const Result& ours, const Result& peers) {
            return !ours && peers == arguments.path && arguments.path.find_first_not_of('/') == std::string::npos;
          }};
}

Difference slashIsAppended() {
  return {"an extension may contain slashes", [](const Arguments& arguments, const Result& ours, const Result&) {
            return !ours && arguments.argument.find('/') != std::string::npos;
          }};
}

// Returns all strings of at most `length` characters.
std::vector<std::string> textsUpTo(int length) {
  std::vector<std::string> texts = {""};
  std::size_t longest = 0;
  for (int i = 0; i < length; ++i) {
    const std::size_t end = texts.size();
    for (; longest < end; ++longest) {
      for (const char* character : {"a", ".", "/", "~", " ", "\xC3\xA9"})
        texts.push_back(texts[longest] + character);
    }
  }
  return texts;
}

std::string shown(const Result& result) {
  return result ? "\"" + *result + "\"" : "nothing";
}

using Function = std::function<Result(const std::string& path, const std::string& argument)>;

void compare(const std::vector<Arguments>& allArguments, const Function& ours, const Function& peer,
             std::vector<Difference> differences) {
  int failures = 0;
  for (const Arguments& arguments : allArguments) {
    const Result result = ours(arguments.path, arguments.argument);
    const Result peers = peer(arguments.path, arguments.argument);
    if (result == peers) continue;
    bool isKnown = false;
    for (Difference& difference : differences) {
      if (!difference.applies(arguments, result, peers)) continue;
      ++difference.count;
      isKnown = true;
      break;
    }
    if (isKnown) continue;
    ADD_FAILURE() << "of \"" << arguments.path << "\" and \"" << arguments.argument << "\": " << shown(result)
                  << ", the peer " << shown(peers);
    if (++failures == 20) return;
  }
  for (const Difference& difference : differences)
    EXPECT_GT(difference.count, 0) << "no longer occurs: " << difference.reason;
}

std::vector<Arguments> pathsAlone() {
  std::vector<Arguments> allArguments;
  for (const std::string& path : textsUpTo(6))
    allArguments.push_back({path, ""});
  return allArguments;
}

std::vector<Arguments> pairs() {
  const std::vector<std::string> texts = textsUpTo(3);
  std::vector<Arguments> allArguments;
  for (const std::string& path : texts) {
    for (const std::string& argument : texts)
      allArguments.push_back({path, argument});
  }
  return allArguments;
}

TEST(CocoaPathsTest, LastComponent) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::lastPathComponent(path); },
      [](const auto& path, const auto&) { return cocoa::lastPathComponent(path); }, {});
}

TEST(CocoaPathsTest, DeletingTheLastComponent) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::deletingLastPathComponent(path); },
      [](const auto& path, const auto&) { return cocoa::deletingLastPathComponent(path); }, {tildeIsRoot()});
}

TEST(CocoaPathsTest, RemovingTheFileSpec) {
  const auto withoutSpec = [](std::string path, const auto&) {
    return utilRemoveFileSpec(path) ? Result(path) : std::nullopt;
  };
  compare(pathsAlone(), withoutSpec,
          [](const auto& path, const auto&) { return cocoa::deletingLastPathComponent(path); }, {tildeIsRoot()});
}

TEST(CocoaPathsTest, Extension) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::pathExtension(path); },
      [](const auto& path, const auto&) { return cocoa::pathExtension(path); }, {tildeIsRoot()});
}

TEST(CocoaPathsTest, DeletingTheExtension) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::deletingPathExtension(path); },
      [](const auto& path, const auto&) { return cocoa::deletingPathExtension(path); },
      {tildeIsRoot(), hiddenNameIsExtension(), slashesAreKept()});
}

TEST(CocoaPathsTest, AppendingAComponent) {
  compare(pairs(), platform::appendingPathComponent, cocoa::appendingPathComponent, {tildeIsRoot(), slashesAreKept()});
}

TEST(CocoaPathsTest, AppendingAnExtension) {
  compare(pairs(), platform::appendingPathExtension, cocoa::appendingPathExtension,
          {namelessIsKept(), slashIsAppended(), tildeIsRoot(), slashesAreKept()});
}

}  // namespace
