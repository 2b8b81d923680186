// What the program asked of Cocoa, one line a call, and which of the calls are to fail.
//
// A call that the framework makes while it carries out another one is its own affair and is not written down. Main
// thread only.

#pragma once

#import <Cocoa/Cocoa.h>

#include <string>
#include <vector>

namespace doubles {

void note(const std::string& line);

// The lines since the last time, and none of them again.
std::vector<std::string> taken();

// From now on the call answers with nothing at all.
//   "preferences", "dataSource", "request", "URL", "absoluteString", "UTF8String"
void fail(const std::string& call);
bool fails(const std::string& call);

// For as long as it lives, calls are the framework's own.
class Inside {
 public:
  Inside();
  Inside(const Inside&) = delete;
  Inside& operator=(const Inside&) = delete;
  ~Inside();
};

std::string text(BOOL flag);
std::string text(NSRect rect);
std::string text(NSSize size);
std::string text(NSString* string);
std::string text(NSURL* url);

}  // namespace doubles
