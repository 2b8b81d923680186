// Core Foundation on the objects of Foundation. Counts the objects that the caller must release. Thread-safe.

#pragma once

#include <CoreFoundation/CoreFoundation.h>

#include <string>

namespace doubles {

// Counts an object that the caller must release. Returns the object.
CFTypeRef createdObject(CFTypeRef object, const std::string& type);

// Returns a string that the caller must release; null if `text` is not UTF-8.
CFStringRef createString(const std::string& text);

}  // namespace doubles
