#include "examples/launcher/Answer.h"

namespace launcher {
namespace {

bool endsWith(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

// Finds what stands between `head` and `tail`, which must be the whole of the rest.
bool takeBetween(const std::string& text, const std::string& head, const std::string& tail, std::string& inside) {
  if (text.size() < head.size() + tail.size() || text.compare(0, head.size(), head) != 0 || !endsWith(text, tail)) {
    return false;
  }
  inside = text.substr(head.size(), text.size() - head.size() - tail.size());
  return true;
}

struct Entity {
  std::string name;
  char character;
};

std::string unescaped(const std::string& text) {
  static const Entity kEntities[] = {{"&quot;", '"'}, {"&amp;", '&'}, {"&apos;", '\''}, {"&lt;", '<'}, {"&gt;", '>'}};
  std::string result;
  for (std::size_t at = 0; at < text.size();) {
    const Entity* found = nullptr;
    for (const Entity& entity : kEntities) {
      if (text.compare(at, entity.name.size(), entity.name) == 0) found = &entity;
    }
    result += found != nullptr ? found->character : text[at];
    at += found != nullptr ? found->name.size() : 1;
  }
  return result;
}

}  // namespace

bool isComplete(const std::string& message) {
  return endsWith(message, "</result>") || endsWith(message, "</errorNo>");
}

Answer read(const std::string& message) {
  std::string inside;
  if (takeBetween(message, "<result><URL>", "</URL></result>", inside)) return {kSignedIn, unescaped(inside)};
  if (!takeBetween(message, "<errorNo><error>", "</error></errorNo>", inside)) return {kNoAnswer, ""};
  if (inside == "1") return {kWindowClosed, ""};
  if (inside == "2") return {kLoadFailed, ""};
  return {kOptionsMissing, ""};
}

std::string meaning(const Answer& answer) {
  switch (answer.code) {
    case kSignedIn:
      return "signed in; the result is the query of " + answer.address;
    case kWindowClosed:
      return "the user closed the window";
    case kLoadFailed:
      return "a page failed to load";
    case kOptionsMissing:
      return "the window was started without an option that it needs";
    default:
      return "the window ended without an answer";
  }
}

}  // namespace launcher
