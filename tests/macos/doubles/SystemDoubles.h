// Controls the doubles of the system's interfaces: makes calls fail and counts the objects that they create.
//
// - A call is named after its function or method: "FSFindFolder", "openURL:".
// - A failing call returns the given status: an error number for a C function, nil or NO for a method.
// - Thread-safe.

#pragma once

#include <string>
#include <vector>

namespace doubles {

// Makes the call fail until it is called again with status 0.
void failCall(const std::string& call, int status = 1);

// Makes only the next call fail.
void failNextCall(const std::string& call, int status = 1);

// Returns the status of the call that is being made; 0: it succeeds. Used by the doubles.
int statusOf(const std::string& call);

// Counts the objects that their receiver must release. Used by the doubles.
void objectCreated(const std::string& type);
void objectReleased(const std::string& type);

// Returns the types whose objects were not released, or were released too often, with the difference.
//   {"CFUUID 1", "AEDesc -1"}
std::vector<std::string> unreleasedObjects();

// Makes every call succeed and sets every count to 0.
void reset();

}  // namespace doubles
