#include "tests/processes/Ledger.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace processes {
namespace {

constexpr char liveFile[] = "Kelvo.log";

void enter(Ledger& ledger, std::string_view line) {
  const std::size_t start = line.rfind(" | ");
  const std::string_view message = start == std::string_view::npos ? line : line.substr(start + 3);
  const std::size_t colon = message.find(':');
  const std::string writer(message.substr(0, colon));
  const int sequence =
      colon == std::string_view::npos ? 0 : std::atoi(std::string(message.substr(colon + 1, 10)).c_str());
  if (sequence == 0 || message != messageOf(writer, sequence)) {
    ++ledger.torn;
    return;
  }

  Account& account = ledger.writers[writer];
  if (sequence <= account.last) {
    ++account.repeated;
    return;
  }
  account.skipped += sequence - account.last - 1;
  account.last = sequence;
}

void enterFile(Ledger& ledger, const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  for (std::string line; std::getline(file, line);)
    enter(ledger, line);
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

Account Ledger::of(const std::string& writer) const {
  const auto entry = writers.find(writer);
  return entry == writers.end() ? Account() : entry->second;
}

Ledger readLedger(const std::string& folder) {
  std::vector<std::filesystem::directory_entry> archives;
  for (const auto& entry : std::filesystem::directory_iterator(folder))
    if (entry.path().filename() != liveFile) archives.push_back(entry);
  std::sort(archives.begin(), archives.end(),
            [](const auto& one, const auto& other) { return one.last_write_time() < other.last_write_time(); });

  Ledger ledger;
  ledger.archives = static_cast<int>(archives.size());
  for (const auto& archive : archives)
    enterFile(ledger, archive.path());
  enterFile(ledger, folder + "/" + liveFile);
  return ledger;
}

}  // namespace processes
