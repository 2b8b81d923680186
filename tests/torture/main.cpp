// Attacks the log, and prints one table of what was lost, glued, reordered and hung.
//
//   torture [--short] [GROUP...]      every group by default
//
// - Runs in namespaces of its own for processes, semaphore sets and mounts; its home folder is in memory.
// - Run it through tests/support/in-own-home.
// - Ends after thirty minutes at the latest.
// - Exits with 1 if a row failed, with 77 if it cannot create the namespaces.

#include <sched.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "platform/WaitLimit.h"
#include "tests/support/Home.h"
#include "tests/support/Mounts.h"
#include "tests/support/OwnProcesses.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace {

struct Group {
  const char* name;
  void (*run)(torture::Table&, torture::Scale);
  bool hasRivals = false;  // whether lines wait only for other lines
};

constexpr Group kGroups[] = {{"kills", torture::runKills, true},       {"faults", torture::runFaults},
                             {"conditions", torture::runConditions},   {"others", torture::runOthers},
                             {"families", torture::runFamilies, true}, {"threads", torture::runThreads, true}};

// The limit of these groups in the short form, which runs beside other tests.
constexpr std::chrono::seconds kRivalsWait{20};

constexpr std::size_t kHomeSize = std::size_t{4} << 30;

bool hasOpenLog() {
  std::error_code ignored;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd"))
    if (std::filesystem::read_symlink(entry, ignored).filename() == "Kelvo.log") return true;
  return false;
}

// The process is the first one of its namespace, which ignores signals that it does not handle.
void endOn(int signal) {
  const auto end = [](int number) {
    constexpr char kText[] = "torture: ended by a signal or the time limit\n";
    (void)!::write(STDERR_FILENO, kText, sizeof kText - 1);
    ::_exit(128 + number);
  };
  (void)::signal(signal, end);
}

int runGroups(const std::vector<std::string>& names, torture::Scale scale) {
  if (!support::unshareNamespaces(CLONE_NEWIPC)) return support::kImpossible;
  if (!support::mountMemory(support::ownHome(), kHomeSize)) return support::kImpossible;
  for (const int signal : {SIGALRM, SIGINT, SIGTERM})
    endOn(signal);
  ::alarm(1800);
  if (!scale.isShort) torture::hangLimit = std::chrono::seconds(10);
  torture::Table table;
  const std::chrono::seconds limit = platform::WaitLimit::limit;
  for (const Group& group : kGroups) {
    const bool isChosen = names.empty() || std::find(names.begin(), names.end(), group.name) != names.end();
    if (!isChosen) continue;
    platform::WaitLimit::limit = group.hasRivals && scale.isShort ? kRivalsWait : limit;
    group.run(table, scale);
  }
  return table.passed() ? 0 : 1;
}

}  // namespace

int main(int argc, char** argv) try {
  std::vector<std::string> names(argv + 1, argv + argc);
  if (!names.empty() && names.front() == torture::kOpenLogOption) return hasOpenLog() ? 1 : 0;
  const auto option = std::find(names.begin(), names.end(), "--short");
  const torture::Scale scale{option != names.end()};
  if (scale.isShort) names.erase(option);
  return support::withOwnProcesses([&] { return runGroups(names, scale); });
} catch (const std::exception& problem) {
  std::fprintf(stderr, "torture: %s\n", problem.what());
  return 1;
}
