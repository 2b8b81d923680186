#include "tests/processes/Writers.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <functional>

#include "applog/Logger.h"

namespace processes {
namespace {

using support::Child;
using support::comesTrue;

// The facade cuts what it formats, so a long message goes out finished.
void writeLine(const std::string& message) {
  Logger& logger = *Logger::getInstance();
  if (message.size() < 1000) {
    logger.logInfo("SVO", "%s", message.c_str());
  } else {
    logger.sendMessageToTARNLogger(tarn::INFO, "", "QSU", "SVO", "SVO", "", "", message.c_str());
  }
}

void writeLines(const std::string& writer, int lines, Acknowledged& acknowledged,
                const std::function<bool(int)>& mayWrite) {
  Logger::getInstance()->setLogLevel(Log_Level_Info, nullptr, nullptr);
  for (int sequence = 1; sequence <= lines; ++sequence) {
    if (!comesTrue([&] { return mayWrite(sequence); })) return;
    writeLine(messageOf(writer, sequence));
    acknowledged = sequence;
  }
}

std::string nameOfWriter(std::size_t writer) {
  return "writer" + std::to_string(writer);
}

std::string nameOfVictim(int victim) {
  return "victim" + std::to_string(victim);
}

}  // namespace

Writers::Writers(int count, int linesEach) : linesEach_(linesEach) {
  for (std::size_t writer = 0; writer < static_cast<std::size_t>(count); ++writer) {
    const auto write = [this, writer] {
      writeLines(nameOfWriter(writer), linesEach_, (*acknowledged_)[writer],
                 [this](int sequence) { return sequence <= *allowed_; });
      return 0;
    };
    processes_.emplace_back(write, Child::Ending::orderly);
  }
}

bool Writers::areDone() const {
  const int expected = std::min(allowed(), linesEach_);
  return comesTrue([&] {
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

void Writers::expectNoneLost(const Ledger& ledger) const {
  for (std::size_t writer = 0; writer < processes_.size(); ++writer) {
    const Account account = ledger.of(nameOfWriter(writer));
    EXPECT_EQ(account.last, linesEach_);
    EXPECT_EQ(account.skipped, 0);
  }
}

void Writers::expectNoneTwice(const Ledger& ledger) const {
  for (std::size_t writer = 0; writer < processes_.size(); ++writer) {
    EXPECT_EQ(ledger.of(nameOfWriter(writer)).repeated, 0);
  }
}

void Victims::add() {
  const int victim = started_++;
  processes_.emplace_back([&] {
    writeLines(nameOfVictim(victim), linesEach, acknowledgedBy(victim), [](int) { return true; });
    return ::pause();
  });
  EXPECT_TRUE(comesTrue([&] { return acknowledgedBy(victim) > 0; })) << nameOfVictim(victim) << " is stuck";
}

void Victims::killOne() {
  const int victim = killed_++;
  const int enough = std::uniform_int_distribution<int>(1, linesEach)(random_);
  EXPECT_TRUE(comesTrue([&] { return acknowledgedBy(victim) >= enough; })) << nameOfVictim(victim) << " is stuck";
  Child& process = processes_[static_cast<std::size_t>(victim)];
  process.kill();
  process.wait();
}

void Victims::expectNoneLostOrTwice(const Ledger& ledger) const {
  for (int victim = 0; victim < started_; ++victim) {
    const Account account = ledger.of(nameOfVictim(victim));
    EXPECT_GE(account.last, acknowledgedBy(victim)) << nameOfVictim(victim);
    EXPECT_LE(account.last, acknowledgedBy(victim) + 1) << nameOfVictim(victim);
    EXPECT_EQ(account.repeated, 0) << nameOfVictim(victim);
    EXPECT_EQ(account.skipped, 0) << nameOfVictim(victim);
  }
}

}  // namespace processes
