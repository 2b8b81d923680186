#include "tests/processes/Writers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "applog/Logger.h"
#include "tests/processes/WriteLine.h"

namespace processes {
namespace {

using support::becomesTrue;
using support::Child;

void writeLines(const std::string& writer, int lines, Acknowledged& acknowledged,
                const std::function<bool(int)>& mayWrite) {
  Logger::getInstance()->setLogLevel(Log_Level_Info, nullptr, nullptr);
  for (int sequence = 1; sequence <= lines; ++sequence) {
    if (!becomesTrue([&] { return mayWrite(sequence); })) return;
    writeLine(messageOf(writer, sequence));
    acknowledged = sequence;
  }
}

std::string nameOfWriter(std::size_t writer) {
  return "writer" + std::to_string(writer);
}

std::string nameOfKilledWriter(int writer) {
  return "killed" + std::to_string(writer);
}

}  // namespace

Writers::Writers(int count, int linesEach) : linesEach_(linesEach) {
  for (std::size_t writer = 0; writer < static_cast<std::size_t>(count); ++writer) {
    const auto write = [this, writer] {
      writeLines(nameOfWriter(writer), linesEach_, (*acknowledged_)[writer],
                 [this](int sequence) { return sequence <= *allowed_; });
      return 0;
    };
    processes_.emplace_back(write, Child::Ending::kOrderly);
  }
}

bool Writers::waitUntilDone() const {
  const int expected = std::min(allowed(), linesEach_);
  return becomesTrue([&] {
    for (std::size_t writer = 0; writer < processes_.size(); ++writer) {
      if ((*acknowledged_)[writer] < expected) return false;
    }
    return true;
  });
}

void Writers::expectEnded() {
  for (Child& process : processes_)
    EXPECT_EQ(process.wait(), 0);
}

void Writers::expectNoneLost(const LogLines& found) const {
  for (std::size_t writer = 0; writer < processes_.size(); ++writer) {
    const WriterLines lines = found.of(nameOfWriter(writer));
    EXPECT_EQ(lines.last, linesEach_);
    EXPECT_TRUE(lines.missing.empty());
    EXPECT_EQ(lines.reordered, 0);
  }
}

void Writers::expectNoneRepeated(const LogLines& found) const {
  for (std::size_t writer = 0; writer < processes_.size(); ++writer) {
    EXPECT_EQ(found.of(nameOfWriter(writer)).repeated, 0);
  }
}

void KilledWriters::add() {
  const int writer = started_++;
  processes_.emplace_back([&] {
    writeLines(nameOfKilledWriter(writer), kLinesEach, acknowledgedBy(writer), [](int) { return true; });
    return ::pause();
  });
  EXPECT_TRUE(becomesTrue([&] { return acknowledgedBy(writer) > 0; })) << nameOfKilledWriter(writer) << " is stuck";
}

void KilledWriters::killOne() {
  const int writer = killed_++;
  const int enough = std::uniform_int_distribution<int>(1, kLinesEach)(random_);
  EXPECT_TRUE(becomesTrue([&] { return acknowledgedBy(writer) >= enough; }))
      << nameOfKilledWriter(writer) << " is stuck";
  Child& process = processes_[static_cast<std::size_t>(writer)];
  process.kill();
  process.wait();
}

void KilledWriters::expectNoneLostOrRepeated(const LogLines& found) const {
  for (int writer = 0; writer < started_; ++writer) {
    const WriterLines lines = found.of(nameOfKilledWriter(writer));
    EXPECT_GE(lines.last, acknowledgedBy(writer)) << nameOfKilledWriter(writer);
    EXPECT_LE(lines.last, acknowledgedBy(writer) + 1) << nameOfKilledWriter(writer);
    EXPECT_EQ(lines.repeated, 0) << nameOfKilledWriter(writer);
    EXPECT_TRUE(lines.missing.empty()) << nameOfKilledWriter(writer);
    EXPECT_EQ(lines.reordered, 0) << nameOfKilledWriter(writer);
  }
}

}  // namespace processes
