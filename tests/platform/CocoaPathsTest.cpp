// Path strings against the NSString methods whose answers they promise, over every short text of a small alphabet.
//
// The peer is the free implementation of Cocoa. Where the two differ the rules of platform/Path.h are what the
// project keeps; each way to differ is listed here with its reason, and has to be met, so that the list stays honest.

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

using Answer = std::optional<std::string>;

struct Question {
  std::string path;
  std::string argument;  // "" for functions of a path alone
};

// A way in which the peer answers otherwise.
struct Difference {
  const char* reason;
  std::function<bool(const Question&, const Answer& ours, const Answer& peers)> applies;
  int met = 0;
};

bool beginsWith(std::string_view text, std::string_view beginning) {
  return text.substr(0, beginning.size()) == beginning;
}

// With one slash for several and none at the end.
std::string withoutExtraSlashes(const std::string& path) {
  return platform::appendingPathComponent(path, "");
}

Difference slashesStay() {
  return {"slashes that count for nothing are kept", [](const Question&, const Answer& ours, const Answer& peers) {
            return ours && peers && withoutExtraSlashes(*peers) == ours;
          }};
}

Difference tildeIsRoot() {
  return {"a leading ~ is a root of its own, as / is",
          [](const Question& question, const Answer&, const Answer&) { return beginsWith(question.path, "~"); }};
}

Difference hiddenNameIsExtension() {
  return {"in a folder, a name that begins with its only dot is all extension",
          [](const Question& question, const Answer& ours, const Answer& peers) {
            const std::string name = platform::lastPathComponent(question.path);
            return name.rfind('.') == 0 && withoutExtraSlashes(*peers + name) == ours;
          }};
}

Difference namelessStays() {
  return {"what has no name stays as it is", [](const Question& question, const Answer& ours, const Answer& peers) {
            return !ours && peers == question.path && question.path.find_first_not_of('/') == std::string::npos;
          }};
}

Difference slashIsAppended() {
  return {"an extension may hold slashes", [](const Question& question, const Answer& ours, const Answer&) {
            return !ours && question.argument.find('/') != std::string::npos;
          }};
}

// Every text of up to `length` characters.
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

std::string shown(const Answer& answer) {
  return answer ? "\"" + *answer + "\"" : "nothing";
}

using Function = std::function<Answer(const std::string& path, const std::string& argument)>;

void compare(const std::vector<Question>& questions, const Function& ours, const Function& peer,
             std::vector<Difference> differences) {
  int failures = 0;
  for (const Question& question : questions) {
    const Answer answer = ours(question.path, question.argument);
    const Answer peers = peer(question.path, question.argument);
    if (answer == peers) continue;
    bool isKnown = false;
    for (Difference& difference : differences) {
      if (!difference.applies(question, answer, peers)) continue;
      ++difference.met;
      isKnown = true;
      break;
    }
    if (isKnown) continue;
    ADD_FAILURE() << "of \"" << question.path << "\" and \"" << question.argument << "\": " << shown(answer)
                  << ", the peer " << shown(peers);
    if (++failures == 20) return;
  }
  for (const Difference& difference : differences)
    EXPECT_GT(difference.met, 0) << "no more: " << difference.reason;
}

std::vector<Question> pathsAlone() {
  std::vector<Question> questions;
  for (const std::string& path : textsUpTo(6))
    questions.push_back({path, ""});
  return questions;
}

std::vector<Question> pairs() {
  const std::vector<std::string> texts = textsUpTo(3);
  std::vector<Question> questions;
  for (const std::string& path : texts) {
    for (const std::string& argument : texts)
      questions.push_back({path, argument});
  }
  return questions;
}

TEST(CocoaPaths, AgreeOnTheLastComponent) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::lastPathComponent(path); },
      [](const auto& path, const auto&) { return cocoa::lastPathComponent(path); }, {});
}

TEST(CocoaPaths, AgreeOnThePathWithoutItsLastComponent) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::deletingLastPathComponent(path); },
      [](const auto& path, const auto&) { return cocoa::deletingLastPathComponent(path); }, {tildeIsRoot()});
}

TEST(CocoaPaths, AgreeOnThePathWhoseFileSpecWasRemoved) {
  const auto withoutSpec = [](std::string path, const auto&) {
    return utilRemoveFileSpec(path) ? Answer(path) : std::nullopt;
  };
  compare(pathsAlone(), withoutSpec,
          [](const auto& path, const auto&) { return cocoa::deletingLastPathComponent(path); }, {tildeIsRoot()});
}

TEST(CocoaPaths, AgreeOnTheExtension) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::pathExtension(path); },
      [](const auto& path, const auto&) { return cocoa::pathExtension(path); }, {tildeIsRoot()});
}

TEST(CocoaPaths, AgreeOnThePathWithoutItsExtension) {
  compare(
      pathsAlone(), [](const auto& path, const auto&) { return platform::deletingPathExtension(path); },
      [](const auto& path, const auto&) { return cocoa::deletingPathExtension(path); },
      {tildeIsRoot(), hiddenNameIsExtension(), slashesStay()});
}

TEST(CocoaPaths, AgreeOnAnAppendedComponent) {
  compare(pairs(), platform::appendingPathComponent, cocoa::appendingPathComponent, {tildeIsRoot(), slashesStay()});
}

TEST(CocoaPaths, AgreeOnAnAppendedExtension) {
  compare(pairs(), platform::appendingPathExtension, cocoa::appendingPathExtension,
          {namelessStays(), slashIsAppended(), tildeIsRoot(), slashesStay()});
}

}  // namespace
