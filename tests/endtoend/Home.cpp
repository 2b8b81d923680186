#include "tests/endtoend/Home.h"

#include <pwd.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <fstream>
#include <stdexcept>

namespace endtoend {
namespace {

constexpr char kSeparator[] = " | ";
constexpr int kFieldsBeforeTheMessage = 9;

std::string messageOf(const std::string& line) {
  std::size_t at = 0;
  for (int field = 0; field < kFieldsBeforeTheMessage; ++field) {
    at = line.find(kSeparator, at);
    if (at == std::string::npos) return line;
    at += sizeof kSeparator - 1;
  }
  return line.substr(at);
}

std::vector<std::string> filesIn(const std::filesystem::path& folder) {
  std::vector<std::string> files;
  if (!std::filesystem::exists(folder)) return files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(folder)) {
    files.push_back(entry.path().lexically_relative(folder));
  }
  std::sort(files.begin(), files.end());
  return files;
}

}  // namespace

std::filesystem::path homeFolder() {
  if (std::getenv("NSS_WRAPPER_PASSWD") == nullptr)
    throw std::runtime_error("run this through tests/support/in-own-home");
  return getpwuid(geteuid())->pw_dir;
}

std::vector<std::string> filesInHome() {
  return filesIn(homeFolder());
}

std::vector<std::string> sandboxFiles() {
  return filesIn(std::filesystem::path(std::getenv("XDG_RUNTIME_DIR")) / ".flatpak");
}

std::filesystem::path logFile() {
  return homeFolder() / "Library/Logs/Kelvo.log";
}

std::vector<std::string> logLines() {
  std::ifstream file(logFile());
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);)
    lines.push_back(line);
  return lines;
}

std::vector<std::string> logMessages() {
  std::vector<std::string> messages = logLines();
  std::transform(messages.begin(), messages.end(), messages.begin(), messageOf);
  return messages;
}

bool logSays(const std::string& message) {
  const std::vector<std::string> messages = logMessages();
  return std::find(messages.begin(), messages.end(), message) != messages.end();
}

}  // namespace endtoend
