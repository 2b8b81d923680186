// What platform/macos asked of the system's C interfaces, which of the calls are to fail, and what they have made.
// Thread-safe.

#pragma once

#include <string>
#include <vector>

namespace doubles {

// One line a call, with its arguments.
void noteCall(const std::string& line);

// The lines since the last time, a thousand at most, and none of them again.
std::vector<std::string> takenCalls();

// From now on the call answers with this status, in the numbers that it answers with. 0: it works again.
void failCall(const std::string& call, int status);

// The next such call answers so, and no other.
void failNextCall(const std::string& call, int status);

// 0 unless the call that is being made is to fail.
int statusOf(const std::string& call);

// Objects that somebody has to give back, by their type.
void made(const std::string& type);
void givenBack(const std::string& type);

// What has been made and not given back, or given back more often than made: "CFUUID 1", …
std::vector<std::string> unsettled();

// As if nothing had been asked, made or made to fail.
void forgetCalls();

}  // namespace doubles
