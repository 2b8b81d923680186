// The test's own home folder, and the log that the sign-in window keeps there.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace endtoend {

// The home folder in the password database. Throws std::runtime_error outside tests/support/in-own-home: a test must
// not touch the home of the person who runs it.
std::filesystem::path homeFolder();

// Every file and folder below the home folder, sorted.
//   {"Library", "Library/Logs", "Library/Logs/Kelvo.log"}
std::vector<std::string> filesInHome();

std::filesystem::path logFile();
std::vector<std::string> logLines();

// What the lines say: the text behind the ninth separator.
std::vector<std::string> logMessages();
bool logSays(const std::string& message);

}  // namespace endtoend
