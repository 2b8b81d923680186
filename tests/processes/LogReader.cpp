#include "tests/processes/LogReader.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace processes {
namespace {

constexpr char kLogFile[] = "Kelvo.log";
constexpr std::string_view kLevelField = " | [INFO] | ";

void addLine(LogLines& lines, std::string_view line) {
  const std::size_t start = line.rfind(" | ");
  const std::string_view message = start == std::string_view::npos ? line : line.substr(start + 3);
  const std::size_t colon = message.find(':');
  const std::string writer(message.substr(0, colon));
  const int sequence =
      colon == std::string_view::npos ? 0 : std::atoi(std::string(message.substr(colon + 1, 10)).c_str());
  if (sequence == 0 || message != messageOf(writer, sequence)) {
    ++lines.incomplete;
    if (line.find(kLevelField) != line.rfind(kLevelField)) ++lines.glued;
    return;
  }

  WriterLines& own = lines.writers[writer];
  if (sequence <= own.last) {
    ++(own.missing.erase(sequence) == 1 ? own.reordered : own.repeated);
    return;
  }
  for (int number = own.last + 1; number < sequence; ++number)
    own.missing.insert(number);
  own.last = sequence;
}

void addFile(LogLines& lines, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);)
    addLine(lines, line);
}

}  // namespace

std::string messageOf(const std::string& writer, int sequence) {
  const std::size_t size = sequence % 10 == 0 ? 20000 : 60;
  const std::string number = std::to_string(sequence);
  std::string text = writer;
  text.append(":").append(number).append(":");
  text.append(size, static_cast<char>('a' + sequence % 26));
  return text.append(".").append(number).append(".");
}

WriterLines LogLines::of(const std::string& writer) const {
  const auto entry = writers.find(writer);
  return entry == writers.end() ? WriterLines() : entry->second;
}

LogLines readLog(const std::string& folder) {
  std::vector<std::filesystem::directory_entry> archives;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().filename() != kLogFile) archives.push_back(entry);
  std::sort(archives.begin(), archives.end(),
            [](const auto& one, const auto& other) { return one.last_write_time() < other.last_write_time(); });

  LogLines lines;
  lines.archives = static_cast<int>(archives.size());
  for (const auto& archive : archives)
    addFile(lines, archive.path());
  addFile(lines, folder + "/" + kLogFile);
  return lines;
}

}  // namespace processes
