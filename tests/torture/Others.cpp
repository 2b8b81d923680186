#include <signal.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "logging/LogTargetDefault.h"
#include "tests/support/Child.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Semaphores.h"
#include "tests/support/Trees.h"
#include "tests/torture/Condition.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Groups.h"
#include "tests/torture/PlainLocks.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

using support::Child;
using Kind = PlainLock::Kind;
using When = Condition::When;

constexpr uid_t kOtherUser = 12345;

std::string nameOf(Kind kind) {
  return kind == Kind::kFlag ? "the user's lock" : "the file's lock";
}

// Another process that holds a lock.
class Holder {
 public:
  // Runs as the user, if one is given, and creates the set if there is none.
  void hold(Kind kind, std::optional<uid_t> user) {
    const key_t key = PlainLock::keyOf(kind);
    const support::Shared<std::atomic<bool>> holds;
    process_.emplace([&] {
      if (user && ::setresuid(*user, *user, *user) != 0) return 1;
      *holds = PlainLock(kind, key).take();
      return ::pause();
    });
    support::becomesTrue([&] { return holds->load(); });
  }

  void stop() const { process_->send(SIGSTOP); }

  void end() { process_.reset(); }

 private:
  std::optional<Child> process_;
};

Holder holder;

void removeSet(Kind kind) {
  (void)::semctl(::semget(PlainLock::keyOf(kind), 0, 0), 0, IPC_RMID);
}

void createLog() {
  support::writeFile(logPath(), "");
}

// A line that reports how many lines are missing is no line of the writer.
int unreportedLoss() {
  for (const std::string& line : support::linesOf(logPath()))
    if (line.find(" | w:") == std::string::npos) return 0;
  return 1;
}

Condition heldByStoppedProcess(Kind kind) {
  const auto impose = [kind] {
    holder.hold(kind, std::nullopt);
    holder.stop();
  };
  Condition condition{"a stopped process holds " + nameOf(kind) + ": unreported", When::kWhileRunning, impose,
                      [] { holder.end(); }};
  condition.violations = unreportedLoss;
  return condition;
}

Condition heldByOtherUser(Kind kind) {
  const auto lift = [kind] {
    holder.end();
    removeSet(kind);
  };
  Condition condition{"another user holds " + nameOf(kind), When::kAtStart, [kind] { holder.hold(kind, kOtherUser); },
                      lift, createLog};
  condition.isPossible = ::geteuid() == 0;
  return condition;
}

Condition removed(Kind kind) {
  return {nameOf(kind) + " is removed", When::kWhileRunning, [kind] { removeSet(kind); }};
}

Condition abandonedByMaker(Scale scale, Kind kind) {
  const auto abandon = [kind] {
    createLog();
    PlainLock::createWithoutValue(kind);
  };
  Condition condition{"killed between creating and freeing " + nameOf(kind), When::kAtStart, [] {}, [] {}, abandon};
  condition.limit = scale.secondsToGetThrough();
  return condition;
}

Condition countExhausted(Kind kind) {
  constexpr int kMaxValue = 32767;
  const auto exhaust = [kind] {
    createLog();
    support::setValueOf(PlainLock(kind).id(), 0, kMaxValue);
  };
  return {"32767 unclean ends of users of " + nameOf(kind), When::kAtStart, [] {}, [] {}, exhaust};
}

Condition releaseFails(int release) {
  const char* const name = release == 1 ? "releasing the file's lock fails" : "releasing the user's lock fails";
  return {name, When::kWhileRunning, [release] { arm({ENOSPC, release, false, "semop +"}); }, [] { disarm(); }};
}

std::vector<Condition> allConditions(Scale scale) {
  std::vector<Condition> conditions;
  for (const Kind kind : {Kind::kFlag, Kind::kFile}) {
    conditions.push_back(heldByStoppedProcess(kind));
    conditions.push_back(heldByOtherUser(kind));
    conditions.push_back(removed(kind));
    conditions.push_back(abandonedByMaker(scale, kind));
    conditions.push_back(countExhausted(kind));
  }
  conditions.push_back(releaseFails(1));
  conditions.push_back(releaseFails(2));
  return conditions;
}

volatile sig_atomic_t terminated = 0;

// A program that handles SIGTERM in its main loop, as the window does, must return from the call that logs.
void runTermination(Table& table) {
  Row row("SIGTERM while a stopped process holds the lock");
  reset();
  makeLogFolder();
  torment(row, [](Writer& writer) {
    (void)::signal(SIGTERM, [](int) { terminated = 1; });
    Writer::start();
    writer.loseLines();
    holder.hold(Kind::kFlag, std::nullopt);
    holder.stop();
    const pid_t self = ::getpid();
    const Child terminator([self] { return ::kill(self, SIGTERM); });
    while (terminated == 0)
      writer.line();
    holder.end();
    writer.recover();
  });
  table.print(row);
}

// A named pipe takes the place of the log again and again, while a process opens it.
void runPipe(Table& table, Scale scale) {
  Row row("a named pipe takes the log's place");
  reset();
  makeLogFolder();
  createLog();
  const std::string pipe = support::ownHome() + "/pipe";
  (void)::mkfifo(pipe.c_str(), 0600);
  row.tried = scale.of(2000);
  const support::Shared<std::atomic<int>> done;
  {
    const support::Swapper swapper(pipe, logPath());
    Child process([&] {
      for (; *done < row.tried; ++*done) {
        tarn::LogTargetDefault target("QSU");
        target.setLogFile("Kelvo.log", "");
        target.onRegisterTarget();
      }
      return 0;
    });
    addEnd(row, statusOf(process, [&] { return done->load(); }));
  }
  std::filesystem::remove(logPath());
  const support::Shared<Progress> progress;
  runFreshWriter(row, "fresh", *progress);
  addLines(row, processes::readLog(support::ownLogFolder()), "fresh", *progress);
  table.print(row);
}

}  // namespace

void runOthers(Table& table, Scale scale) {
  for (const Condition& condition : allConditions(scale))
    run(table, scale, condition);
  runTermination(table);
  runPipe(table, scale);
  runTraps(table);
}

}  // namespace torture
