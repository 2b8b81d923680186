#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <random>
#include <string>
#include <vector>

#include "applog/OVNLoggingFileOperationFlag.h"
#include "logging/BinaryLock.h"
#include "platform/UniqueFd.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/torture/Groups.h"
#include "tests/torture/PlainLocks.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

using support::Child;
using support::Shared;

constexpr int kCycles = 15000;
constexpr int kFileLockNumber = 11;

// Counts the processes that hold a lock at the same time.
class Holders {
 public:
  void enter() { together_ += holders_.fetch_add(1) == 0 ? 0 : 1; }
  void leave() { --holders_; }
  int together() const { return together_; }

 private:
  std::atomic<int> holders_{0};
  std::atomic<int> together_{0};
};

// Does not yield: with other load on the machine that would take a long time.
void hold(Holders& holders) {
  constexpr std::chrono::microseconds kTime{5};
  holders.enter();
  const auto end = std::chrono::steady_clock::now() + kTime;
  while (std::chrono::steady_clock::now() < end) {
  }
  holders.leave();
}

// Attaches to both locks, takes and releases them, and detaches.
bool cycleOfOurs(Holders& flagHolders, Holders& lockHolders) {
  OVNLoggingFileOperationFlag flag;
  flag.semid = -1;
  flag.held = false;
  tarn::BinaryLock lock;
  if (!flag.createFlag() || !lock.create(logPath(), kFileLockNumber)) return false;
  const bool taken = flag.startFileOperation();
  if (taken) hold(flagHolders);
  const bool both = taken && lock.wait();
  if (both) hold(lockHolders);
  const bool released = !both || lock.release();
  return flag.endFileOperation() && flag.finalizeFlag() && lock.finalize() && both && released;
}

bool cycleOfPlain(const PlainLock& flag, const PlainLock& lock, Holders& flagHolders, Holders& lockHolders) {
  if (!flag.take()) return false;
  hold(flagHolders);
  if (!lock.take()) return false;
  hold(lockHolders);
  return lock.give() && flag.give();
}

// The plain processes stay attached: two of them that create a set at the same moment make two holders.
void runCycles(Table& table, Scale scale) {
  Row row("two plain processes and two of ours: two holders");
  reset();
  makeLogFolder();
  support::writeFile(logPath(), "");
  const PlainLock plainFlag(PlainLock::Kind::kFlag), plainLock(PlainLock::Kind::kFile);
  const Shared<Holders> flagHolders, lockHolders;
  const Shared<std::atomic<int>> refused, done;
  const int cycles = scale.of(kCycles);
  std::vector<Child> processes;
  for (int i = 0; i < 4; ++i) {
    processes.emplace_back([&] {
      for (int cycle = 0; cycle < cycles; ++cycle) {
        const bool worked = i < 2 ? cycleOfPlain(plainFlag, plainLock, *flagHolders, *lockHolders)
                                  : cycleOfOurs(*flagHolders, *lockHolders);
        if (!worked) ++*refused;
        ++*done;
      }
      return 0;
    });
  }
  for (Child& process : processes)
    addEnd(row, statusOf(process, [&] { return done->load(); }));
  row.tried = 4 * cycles;
  row.wrong = flagHolders->together() + lockHolders->together() + *refused;
  table.print(row);
}

struct Member {
  std::string name;
  Shared<Progress> progress;
};

void writePlainLines(Member& member, int count) {
  const platform::UniqueFd log(::open(logPath().c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  const PlainLock flag(PlainLock::Kind::kFlag), lock(PlainLock::Kind::kFile);
  for (int number = 1; number <= count && flag.take() && lock.take(); ++number) {
    const std::string message = processes::messageOf(member.name, number);
    const std::string line = "time | [INFO] |  | QSU | SVO | SVO |  |  | 1 | " + message + "\n";
    const bool written = ::write(log.get(), line.data(), line.size()) == static_cast<ssize_t>(line.size());
    if (written) member.progress->acknowledged = number;
    if (!lock.give() || !flag.give()) return;
  }
}

void writeLines(Member& member, int count) {
  Writer writer(member.name, *member.progress);
  Writer::start();
  writer.lines(count);
}

// Kills a plain process while it holds both locks.
void killPlainHolder() {
  const Shared<std::atomic<bool>> holds;
  Child holder([&] {
    const PlainLock flag(PlainLock::Kind::kFlag), lock(PlainLock::Kind::kFile);
    *holds = flag.take() && lock.take();
    return ::pause();
  });
  support::becomesTrue([&] { return holds->load(); });
  holder.kill();
  holder.wait();
}

void runLines(Table& table, Scale scale, const std::string& name, int kills) {
  Row row(name);
  reset();
  makeLogFolder();
  support::writeFile(logPath(), "");
  const int count = scale.of(kCycles);
  std::deque<Member> members;
  std::vector<Child> processes;
  for (int i = 0; i < 4; ++i) {
    Member& member = members.emplace_back();
    member.name = "w" + std::to_string(i);
    const auto write = [&member, count, isPlain = i < 2] {
      isPlain ? writePlainLines(member, count) : writeLines(member, count);
      return 0;
    };
    processes.emplace_back(write, Child::Ending::kOrderly);
  }
  for (int i = 0; i < kills; ++i)
    killPlainHolder();
  const auto acknowledged = [&] {
    int sum = 0;
    for (const Member& member : members)
      sum += member.progress->acknowledged;
    return sum;
  };
  for (Child& process : processes)
    addEnd(row, statusOf(process, acknowledged));

  const processes::LogLines found = processes::readLog(support::ownLogFolder());
  row.glued = found.glued;
  for (const Member& member : members) {
    row.tried += count;
    row.lost += count - member.progress->acknowledged;
    addLines(row, found, member.name, *member.progress);
  }
  table.print(row);
}

}  // namespace

void runFamilies(Table& table, Scale scale) {
  runCycles(table, scale);
  runLines(table, scale, "two plain processes and two of ours: lines", 0);
  runLines(table, scale, "a plain process is killed while it holds both locks", scale.of(500));
}

}  // namespace torture
