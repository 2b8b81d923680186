#include "tests/endtoend/Processes.h"

#include <sys/prctl.h>
#include <sys/sem.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "tests/endtoend/Home.h"
#include "tests/support/Semaphores.h"
#include "tests/tools/support/ChildProcess.h"

namespace endtoend {
namespace {

constexpr int kUserLock = 2147483547;
constexpr int kLogFileLock = 11;

std::vector<pid_t> childrenOf(pid_t pid) {
  std::vector<pid_t> children;
  std::error_code gone;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/" + std::to_string(pid) + "/task", gone)) {
    std::ifstream file(thread.path() / "children");
    for (pid_t child = 0; file >> child;)
      children.push_back(child);
  }
  return children;
}

std::string nameOf(pid_t pid) {
  std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
  std::string name;
  std::getline(file, name);
  return name;
}

std::vector<pid_t> descendantsOf(pid_t pid) {
  std::vector<pid_t> all;
  for (const pid_t child : childrenOf(pid)) {
    all.push_back(child);
    const std::vector<pid_t> below = descendantsOf(child);
    all.insert(all.end(), below.begin(), below.end());
  }
  return all;
}

}  // namespace

std::optional<pid_t> descendantNamed(pid_t pid, const std::string& name) {
  for (const pid_t each : descendantsOf(pid)) {
    if (nameOf(each).rfind(name, 0) == 0) return each;
  }
  return std::nullopt;
}

std::optional<long> peakMegabytesOf(pid_t pid) {
  std::ifstream status("/proc/" + std::to_string(pid) + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.rfind("VmHWM:", 0) == 0) return std::stol(line.substr(6)) / 1024;
  }
  return std::nullopt;
}

void adoptOrphans() {
  (void)prctl(PR_SET_CHILD_SUBREAPER, 1);
}

std::vector<pid_t> childrenOfThisProcess() {
  return childrenOf(getpid());
}

bool waitForExit(pid_t process) {
  const bool ended = tools::endsWithin(process, std::chrono::seconds(30));
  if (ended) (void)waitpid(process, nullptr, WNOHANG);
  return ended;
}

std::vector<int> semaphoreSets() {
  std::vector<int> sets;
  for (const int id : {support::setOf(homeFolder(), kUserLock), support::setOf(logFile(), kLogFileLock)}) {
    if (id != -1) sets.push_back(id);
  }
  return sets;
}

void removeSemaphoreSets() {
  for (const int id : semaphoreSets())
    semctl(id, 0, IPC_RMID);
}

}  // namespace endtoend
