#include "tests/macos/doubles/Journal.h"

#include <set>
#include <sstream>
#include <utility>

namespace doubles {
namespace {

std::vector<std::string> lines;
std::set<std::string> failing;
int depth = 0;

}  // namespace

void note(const std::string& line) {
  if (depth == 0) lines.push_back(line);
}

std::vector<std::string> taken() {
  return std::exchange(lines, {});
}

void fail(const std::string& call) {
  failing.insert(call);
}

bool fails(const std::string& call) {
  return failing.count(call) != 0;
}

Inside::Inside() {
  ++depth;
}

Inside::~Inside() {
  --depth;
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
