// Records the Cocoa calls of the sign-in window, one line per call.
//
// - Calls that the framework makes itself are not recorded: see `RecordingPaused`.
// - Main thread only.

#pragma once

#import <Cocoa/Cocoa.h>

#include <string>
#include <vector>

namespace doubles {

void record(const std::string& line);

// Returns the recorded lines and removes them.
std::vector<std::string> takeCalls();

// While an object of this class exists, no call is recorded.
class RecordingPaused {
 public:
  RecordingPaused();
  RecordingPaused(const RecordingPaused&) = delete;
  RecordingPaused& operator=(const RecordingPaused&) = delete;
  ~RecordingPaused();
};

// The forms in which arguments are recorded.
//   YES => "YES"   NSMakeRect(1, 2, 30, 40) => "1,2 30x40"   NSMakeSize(30, 40) => "30x40"   nil => "nil"
std::string text(BOOL flag);
std::string text(NSRect rect);
std::string text(NSSize size);
std::string text(NSString* string);
std::string text(NSURL* url);

}  // namespace doubles
