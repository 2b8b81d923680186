// The application launcher: it really starts programs, and gives them the event that they are to begin with in words
// only. Thread-safe.

#pragma once

#include <CoreServices/CoreServices.h>

#include <string>

namespace doubles {

// What the descriptor describes; "nothing" for an empty one.
std::string wordsOf(const AEDesc* record);

}  // namespace doubles
