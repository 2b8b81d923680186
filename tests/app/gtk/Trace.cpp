#include "tests/app/gtk/Trace.h"

#include <cstddef>
#include <stdexcept>

namespace {

using Kind = LoadEvent::Kind;

struct Format {
  Kind kind;
  const char* name;
  bool hasResource;
  bool hasAddress;
  bool hasError;
};

constexpr Format kFormats[] = {
    {Kind::kRequested, "requested", false, true, false},
    {Kind::kStarted, "started", false, true, false},
    {Kind::kRedirected, "redirected", false, true, false},
    {Kind::kCommitted, "committed", false, true, false},
    {Kind::kFinished, "finished", false, true, false},
    {Kind::kProvisionalFailed, "failed-provisional", false, true, true},
    {Kind::kFailed, "failed", false, true, true},
    {Kind::kNavigation, "navigation", false, true, false},
    {Kind::kMainResourceStarted, "main-resource", true, true, false},
    {Kind::kResourceStarted, "resource", true, true, false},
    {Kind::kResourceRedirected, "resource-redirected", true, true, false},
    {Kind::kResourceResponse, "resource-response", true, false, false},
    {Kind::kResourceFinished, "resource-finished", true, false, false},
    {Kind::kResourceFailed, "resource-failed", true, true, true},
    {Kind::kDownloadStarted, "download", false, true, false},
    {Kind::kPromptShown, "prompt-shown", false, false, false},
    {Kind::kPromptClosed, "prompt-closed", false, false, false},
    {Kind::kProgress, "progress", false, false, false},
    {Kind::kProcessEnded, "process-ended", false, false, false},
};

constexpr char kNoDomain[] = "-";

// Removes and returns the text up to the first space.
std::string takeFirst(std::string& text) {
  const std::size_t space = text.find(' ');
  const std::string first = text.substr(0, space);
  text.erase(0, space == std::string::npos ? space : space + 1);
  return first;
}

// Removes and returns the text after the last space.
std::string takeLast(std::string& text) {
  const std::size_t space = text.rfind(' ');
  if (space == std::string::npos) throw std::invalid_argument(text);
  const std::string last = text.substr(space + 1);
  text.erase(space);
  return last;
}

}  // namespace

std::string lineOf(const LoadEvent& event) {
  for (const Format& format : kFormats) {
    if (format.kind != event.kind) continue;
    std::string line = format.name;
    if (format.hasResource) line += " " + std::to_string(event.resource);
    if (format.hasAddress) line += " " + event.address;
    if (!format.hasError) return line;
    return line + " " + (event.error.domain.empty() ? kNoDomain : event.error.domain) + " " +
           std::to_string(event.error.code);
  }
  throw std::invalid_argument("unknown kind of event");
}

LoadEvent eventOf(const std::string& line) {
  std::string rest = line;
  const std::string name = takeFirst(rest);
  for (const Format& format : kFormats) {
    if (format.name != name) continue;
    LoadEvent event;
    event.kind = format.kind;
    if (format.hasResource) event.resource = static_cast<unsigned>(std::stoul(takeFirst(rest)));
    if (format.hasError) {
      event.error.code = std::stoi(takeLast(rest));
      event.error.domain = takeLast(rest);
      if (event.error.domain == kNoDomain) event.error.domain.clear();
    }
    if (format.hasAddress) event.address = rest;
    return event;
  }
  throw std::invalid_argument("not an event: " + line);
}
