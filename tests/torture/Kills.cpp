#include <sched.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <fstream>
#include <functional>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/Home.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

using support::Child;
using Flag = std::atomic<bool>;
using Microseconds = std::chrono::microseconds;

constexpr int kKillsPerFolder = 50;
constexpr int kMaxHung = 3;
constexpr std::uintmax_t kFullSize = 10 * 1024 * 1024;

// What a victim does. It sets the flag when the part that is attacked begins, and returns to leave the process.
using Part = std::function<void(Writer&, Flag&)>;

struct Role {
  const char* name;
  int kills;
  Microseconds latest;  // the latest moment of the kill after the flag is set
  int neighbours;       // further processes that log all the time
  Part play;
  bool logIsFull = false;  // when the victim starts
};

void write(Writer& writer, Flag& begun) {
  Writer::start();
  writer.line();
  for (begun = true;;)
    writer.line();
}

void start(Writer& writer, Flag& begun) {
  begun = true;
  Writer::start();
  for (;;)
    writer.line();
}

void leave(Writer& writer, Flag& begun) {
  Writer::start();
  writer.line();
  begun = true;
}

void fillWithBytes() {
  std::ofstream log(logPath(), std::ios::app | std::ios::binary);
  const std::string line = std::string(kFullSize / 8, 'x') + "\n";
  for (int i = 0; i < 8; ++i)
    log << line;
}

void spinFor(Microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) {
  }
}

// A log folder with all processes that log there. Their lines are checked together.
class Batch {
 public:
  Batch(Row& row, const Role& role) : row_(row), role_(role) {
    reset();
    makeLogFolder();
    for (int i = 0; i < role.neighbours; ++i)
      addNeighbour();
  }

  void killOne(std::mt19937& random) {
    if (role_.logIsFull) fillWithBytes();
    const support::Shared<Flag> begun;
    Entry& entry = addEntry();
    Child victim(
        [&] {
          Writer writer(entry.name, *entry.progress);
          role_.play(writer, *begun);
          return 0;
        },
        Child::Ending::kOrderly);
    while (!*begun)
      ::sched_yield();
    spinFor(Microseconds(std::uniform_int_distribution<long>(0, role_.latest.count())(random)));
    victim.kill();
    victim.wait();
    ++row_.tried;

    Entry& fresh = addEntry();
    runFreshWriter(row_, fresh.name, *fresh.progress);
  }

  void check() {
    *stopped_ = true;
    for (Child& neighbour : neighbours_)
      addEnd(row_, statusOf(neighbour));
    const processes::LogLines found = processes::readLog(support::ownLogFolder());
    row_.glued += found.glued;
    for (const Entry& entry : entries_)
      addLines(row_, found, entry.name, *entry.progress);
    row_.wrong += halfArchives();
  }

 private:
  struct Entry {
    std::string name;
    support::Shared<Progress> progress;
  };

  // No two processes start in the same second of the advanced clock, so that no two archives have the same name.
  Entry& addEntry() {
    advanceClocks(std::chrono::seconds(1));
    entries_.emplace_back();
    entries_.back().name = "w" + std::to_string(entries_.size());
    return entries_.back();
  }

  void addNeighbour() {
    Entry& entry = addEntry();
    const auto logUntilStopped = [&] {
      Writer writer(entry.name, *entry.progress);
      for (Writer::start(); !*stopped_; std::this_thread::sleep_for(Microseconds(200)))
        writer.line();
      return 0;
    };
    neighbours_.emplace_back(logUntilStopped, Child::Ending::kOrderly);
  }

  static int halfArchives() {
    int count = 0;
    for (const auto& entry : std::filesystem::directory_iterator(support::ownLogFolder())) {
      const bool isArchive = entry.path() != logPath() && entry.path().extension() == ".log";
      count += isArchive && entry.file_size() < kFullSize ? 1 : 0;
    }
    return count;
  }

  Row& row_;
  const Role& role_;
  const support::Shared<Flag> stopped_;
  std::deque<Entry> entries_;
  std::vector<Child> neighbours_;
};

void run(Table& table, Scale scale, const Role& role) {
  Row row(role.name);
  row.limit = scale.secondsToGetThrough();
  std::mt19937 random{std::random_device{}()};
  while (row.tried < role.kills && row.hung < kMaxHung) {
    Batch batch(row, role);
    for (int i = 0; i < kKillsPerFolder && row.tried < role.kills && row.hung < kMaxHung; ++i)
      batch.killOne(random);
    batch.check();
  }
  table.print(row);
}

}  // namespace

void runKills(Table& table, Scale scale) {
  run(table, scale, {"killed while it writes", scale.of(5000), Microseconds(1000), 2, write});
  run(table, scale, {"killed while it cuts; half archives", scale.of(1000), Microseconds(6000), 2, start, true});
  run(table, scale, {"killed while it starts", scale.of(2500), Microseconds(800), 0, start});
  run(table, scale, {"killed while it leaves", scale.of(1500), Microseconds(200), 0, leave});
}

}  // namespace torture
