#include "tests/macos/doubles/CallLog.h"

#include <sstream>
#include <utility>

namespace doubles {
namespace {

std::vector<std::string> lines;
int pauses = 0;

}  // namespace

void record(const std::string& line) {
  if (pauses == 0) lines.push_back(line);
}

std::vector<std::string> takeCalls() {
  return std::exchange(lines, {});
}

RecordingPaused::RecordingPaused() {
  ++pauses;
}

RecordingPaused::~RecordingPaused() {
  --pauses;
}

std::string text(BOOL flag) {
  return flag ? "YES" : "NO";
}

std::string text(NSRect rect) {
  std::ostringstream out;
  out << rect.origin.x << "," << rect.origin.y << " " << text(rect.size);
  return out.str();
}

std::string text(NSSize size) {
  std::ostringstream out;
  out << size.width << "x" << size.height;
  return out.str();
}

std::string text(NSString* string) {
  const char* const bytes = [string UTF8String];
  if (bytes != nullptr) return bytes;
  return string == nil ? "nil" : "without a UTF-8 form";
}

std::string text(NSURL* url) {
  return text([url absoluteString]);
}

}  // namespace doubles
