// The test's own home folder, and the log of the sign-in window in it.

#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace endtoend {

// Returns the home folder from the password database. Throws std::runtime_error outside tests/support/in-own-home: a
// test must not touch the real home.
std::filesystem::path homeFolder();

// Returns every file and folder below the home folder, sorted.
//   {"Library", "Library/Logs", "Library/Logs/Kelvo.log"}
std::vector<std::string> filesInHome();

// Returns the files and folders in which WebKit describes its sandboxed processes.
std::vector<std::string> sandboxFiles();

std::filesystem::path logFile();
std::vector<std::string> logLines();

// The messages of the lines: the text after the ninth separator.
std::vector<std::string> logMessages();
bool logSays(const std::string& message);

}  // namespace endtoend
