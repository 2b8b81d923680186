// Core Foundation's objects are Foundation's here, and each is counted until it is given back. Thread-safe.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

namespace doubles {

// Counts an object that a function gives away for its caller to release.
CFTypeRef handedOut(CFTypeRef object, const std::string& type);

// Such a string; null when the text is not UTF-8.
CFStringRef newString(const std::string& text);

}  // namespace doubles
