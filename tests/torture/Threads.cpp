#include <pthread.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <deque>
#include <functional>
#include <new>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "applog/Logger.h"
#include "logging/LogTargetDefault.h"
#include "tests/processes/WriteLine.h"
#include "tests/support/Child.h"
#include "tests/support/Home.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

using support::Child;
using support::Shared;

constexpr int kThreads = 4;

struct Member {
  std::string name;
  Shared<Progress> progress;
};

class Members {
 public:
  explicit Members(int count) {
    for (int i = 0; i < count; ++i)
      members_.emplace_back().name = "w" + std::to_string(i);
  }

  Writer writer(int number) {
    Member& member = members_[static_cast<std::size_t>(number)];
    return {member.name, *member.progress};
  }

  // From now on their lines may be lost.
  void loseLines() {
    for (Member& member : members_)
      member.progress->exemptFrom = member.progress->acknowledged + 1;
  }

  int acknowledged() const {
    int sum = 0;
    for (const Member& member : members_)
      sum += member.progress->acknowledged;
    return sum;
  }

  // Adds their lines and those of a fresh writer.
  void check(Row& row) const {
    const Shared<Progress> fresh;
    runFreshWriter(row, "fresh", *fresh);
    const processes::LogLines found = processes::readLog(support::ownLogFolder());
    row.glued += found.glued;
    addLines(row, found, "fresh", *fresh);
    for (const Member& member : members_)
      addLines(row, found, member.name, *member.progress);
  }

 private:
  std::deque<Member> members_;
};

void startAfresh() {
  reset();
  makeLogFolder();
}

// Runs `body` in a process that ends with `exit`.
int statusOfProcess(
    const std::function<int()>& body, const std::function<int()>& progress = [] { return 0; }) {
  Child process(body, Child::Ending::kOrderly);
  return statusOf(process, progress);
}

void runManyThreads(Table& table, Scale scale) {
  Row row("threads that log at the same time");
  startAfresh();
  Members members(kThreads);
  const int count = scale.of(4000);
  const auto run = [&] {
    Writer::start();
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i)
      threads.emplace_back([&members, i, count] { members.writer(i).lines(count); });
    for (std::thread& thread : threads)
      thread.join();
    return 0;
  };
  addEnd(row, statusOfProcess(run, [&] { return members.acknowledged(); }));
  row.tried = kThreads * count;
  members.check(row);
  table.print(row);
}

enum class ChildEnd { kExit, kAbruptExit, kLogAndExit, kExec };

int endChild(ChildEnd end, Writer writer) {
  if (end == ChildEnd::kExec) ::execl("/bin/true", "true", nullptr);
  if (end == ChildEnd::kLogAndExit) writer.lines(5);
  if (end == ChildEnd::kAbruptExit) ::_exit(0);
  return 0;
}

// The parent logs between its forks.
void runForks(Table& table, Scale scale, const char* name, ChildEnd end) {
  Row row(name);
  startAfresh();
  row.tried = scale.of(200);
  Members members(1 + row.tried);
  const auto run = [&] {
    Writer parent = members.writer(0);
    Writer::start();
    for (int i = 1; i <= row.tried; ++i) {
      parent.line();
      const int status = statusOfProcess([&] { return endChild(end, members.writer(i)); });
      if (status != 0) return status == kHung ? 1 : status;
      parent.lines(2);
    }
    return 0;
  };
  addEnd(row, statusOfProcess(run, [&] { return members.acknowledged(); }));
  members.check(row);
  table.print(row);
}

bool programInheritsLog() {
  const pid_t child = ::fork();
  if (child == 0) {
    ::execl("/proc/self/exe", "torture", kOpenLogOption, nullptr);
    ::_exit(127);
  }
  int status = 0;
  return ::waitpid(child, &status, 0) == child && status != 0;
}

// A thread opens and closes the log, while another starts programs.
void runExec(Table& table, Scale scale) {
  Row row("exec while the log is opened: inherited descriptors");
  startAfresh();
  row.tried = scale.of(800);
  const Shared<std::atomic<int>> inherited, done;
  const auto run = [&] {
    std::atomic<bool> stopped{false};
    std::thread opener([&] {
      while (!stopped) {
        tarn::LogTargetDefault target("QSU");
        target.setLogFile("Kelvo.log", "");
        target.onRegisterTarget();
        target.onUnregisterTarget();
      }
    });
    for (; *done < row.tried; ++*done)
      *inherited += programInheritsLog() ? 1 : 0;
    stopped = true;
    opener.join();
    return 0;
  };
  addEnd(row, statusOfProcess(run, [&] { return done->load(); }));
  row.wrong = *inherited;
  table.print(row);
}

void runCancellation(Table& table, Scale scale) {
  Row row("a thread is cancelled inside a line");
  for (row.tried = 0; row.tried < scale.of(200) && row.hung < 3; ++row.tried) {
    startAfresh();
    Members members(2);
    addEnd(row, statusOfProcess([&] {
             Writer::start();
             std::atomic<bool> begun{false};
             std::thread cancelled([&] {
               Writer writer = members.writer(0);
               for (begun = true;;)
                 writer.line();
             });
             while (!begun)
               ::sched_yield();
             (void)::pthread_cancel(cancelled.native_handle());
             cancelled.join();
             members.writer(1).lines(5);
             return 0;
           }));
    members.check(row);
  }
  table.print(row);
}

// The Nth allocation inside a line fails.
void runExceptions(Table& table) {
  Row row("an exception inside a line");
  for (bool reached = true; reached && row.hung < 3 && row.tried < 40; ++row.tried) {
    startAfresh();
    Members members(1);
    const Shared<std::atomic<bool>> failed;
    addEnd(row, statusOfProcess([&] {
             Writer::start();
             const std::string message(500, 'x');
             arm({kNoMemory, row.tried + 1, false, ""});
             try {
               Logger::getInstance()->logInfo("a component with a name that is not short", "%s", message.c_str());
             } catch (const std::bad_alloc&) {
             }
             *failed = !disarm().empty();
             members.writer(0).lines(5);
             return 0;
           }));
    members.check(row);
    reached = *failed;
  }
  table.print(row);
}

// Threads that never end log while the main thread leaves.
void runExit(Table& table, Scale scale) {
  Row row("main returns while threads log");
  std::mt19937 random{std::random_device{}()};
  for (row.tried = 0; row.tried < scale.of(200) && row.hung < 3; ++row.tried) {
    startAfresh();
    Members members(kThreads);
    const std::chrono::microseconds delay(random() % 2000);
    addEnd(row, statusOfProcess([&] {
             Writer::start();
             for (int i = 0; i < kThreads; ++i) {
               std::thread([&members, i] {
                 for (Writer writer = members.writer(i);; std::this_thread::yield())
                   writer.line();
               }).detach();
             }
             std::this_thread::sleep_for(delay);
             members.loseLines();
             return 0;
           }));
    members.check(row);
  }
  table.print(row);
}

struct LateStatic {
  ~LateStatic() { processes::writeLine("late"); }
};

void runLateStatic(Table& table, Scale scale) {
  Row row("a static object logs in its destructor");
  for (row.tried = 0; row.tried < scale.of(200); ++row.tried) {
    startAfresh();
    Members members(1);
    addEnd(row, statusOfProcess([&] {
             static const LateStatic late;  // older than the logger, so that it is destroyed later
             Writer::start();
             members.writer(0).lines(3);
             return 0;
           }));
    members.check(row);
  }
  table.print(row);
}

}  // namespace

void runThreads(Table& table, Scale scale) {
  runManyThreads(table, scale);
  runForks(table, scale, "forked children exit", ChildEnd::kExit);
  runForks(table, scale, "forked children exit abruptly", ChildEnd::kAbruptExit);
  runForks(table, scale, "forked children log and exit", ChildEnd::kLogAndExit);
  runForks(table, scale, "forked children execute a program", ChildEnd::kExec);
  runExec(table, scale);
  runCancellation(table, scale);
  runExceptions(table);
  runExit(table, scale);
  runLateStatic(table, scale);
}

}  // namespace torture
