#include <fcntl.h>
#include <linux/fs.h>
#include <signal.h>
#include <sys/ioctl.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/sem.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "platform/UniqueFd.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/support/Mounts.h"
#include "tests/torture/Condition.h"
#include "tests/torture/Faults.h"
#include "tests/torture/Groups.h"
#include "tests/torture/Scene.h"

namespace torture {
namespace {

using std::chrono::hours;

constexpr Condition::When kAtStart = Condition::When::kAtStart;
constexpr Condition::When kWhileRunning = Condition::When::kWhileRunning;
constexpr Condition::When kAtCut = Condition::When::kAtCut;

std::string folder() {
  return support::ownLogFolder();
}

// Extends a file until the disk is full.
void fillDisk() {
  const platform::UniqueFd ballast(::open((folder() + "/ballast").c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600));
  const std::string block(4096, 'x');
  while (::write(ballast.get(), block.data(), block.size()) > 0) {
  }
}

void emptyDisk() {
  std::filesystem::remove(folder() + "/ballast");
}

void mountSmallDisk() {
  (void)support::mountMemory(folder(), 1024 * 1024);
}

void mountFolder() {
  (void)::mount(folder().c_str(), folder().c_str(), nullptr, MS_BIND, nullptr);
}

void makeReadOnly(bool readOnly) {
  (void)::mount(nullptr, folder().c_str(), nullptr, MS_BIND | MS_REMOUNT | (readOnly ? MS_RDONLY : 0), nullptr);
}

// Every new descriptor would be too high, even after others were closed.
void limitDescriptors(bool limited) {
  rlimit limits{};
  ::getrlimit(RLIMIT_NOFILE, &limits);
  limits.rlim_cur = limited ? STDERR_FILENO + 1 : limits.rlim_max;
  ::setrlimit(RLIMIT_NOFILE, &limits);
}

void limitFileSize(bool limited) {
  rlimit limits{};
  ::getrlimit(RLIMIT_FSIZE, &limits);
  limits.rlim_cur = limited ? std::filesystem::file_size(logPath()) + 10 : limits.rlim_max;
  ::setrlimit(RLIMIT_FSIZE, &limits);
}

void setAttribute(int attribute) {
  const platform::UniqueFd log(::open(logPath().c_str(), O_RDONLY | O_CREAT | O_CLOEXEC, 0666));
  (void)::ioctl(log.get(), FS_IOC_SETFLAGS, &attribute);
}

// The sets that the limit of the machine leaves.
std::vector<int> takenSets;

void takeAllSets() {
  for (int id = ::semget(IPC_PRIVATE, 1, 0600); id != -1; id = ::semget(IPC_PRIVATE, 1, 0600))
    takenSets.push_back(id);
}

void returnSets() {
  for (const int id : takenSets)
    (void)::semctl(id, 0, IPC_RMID);
  takenSets.clear();
}

void renameLog() {
  std::filesystem::rename(logPath(), folder() + "/old.log");
}

int archives() {
  int count = 0;
  for (const std::string& name : support::namesIn(folder()))
    count += name.rfind("Kelvo ", 0) == 0 ? 1 : 0;
  return count;
}

Condition onSmallDisk(const char* name, Condition::When when) {
  return {name, when, fillDisk, emptyDisk, mountSmallDisk};
}

Condition fault(const char* name, const Fault& fault) {
  return {name, kWhileRunning, [fault] { arm(fault); }, [] { disarm(); }};
}

// The log can only be appended to while a cut is due.
Condition appendOnly() {
  static int archivesKept = 0;
  const auto impose = [] { setAttribute(FS_APPEND_FL); };
  const auto lift = [] {
    archivesKept = archives();
    setAttribute(0);
  };
  Condition condition{"full log that cannot be emptied: archives", kAtCut, impose, lift};
  condition.violations = [] { return archivesKept; };
  condition.isPossible = ::geteuid() == 0;
  return condition;
}

// Archives from before the clock was set back have the names of the next seconds.
Condition takenNames() {
  static std::vector<std::string> names;
  const std::string contents = "an older archive\n";
  const auto impose = [contents] {
    names = nextArchiveNames();
    for (std::string& name : names) {
      name.insert(0, folder() + "/");
      support::writeFile(name, contents);
      std::filesystem::last_write_time(name, std::filesystem::file_time_type::clock::now() - hours(1));
    }
  };
  Condition condition{"archive name taken: older archives changed", kAtCut, impose};
  condition.violations = [contents] {
    int changed = 0;
    for (const std::string& name : names)
      changed += support::contentsOf(name) == contents ? 0 : 1;
    return changed;
  };
  return condition;
}

Condition immutableLog() {
  Condition condition{"log immutable at the start", kAtStart, [] { setAttribute(FS_IMMUTABLE_FL); },
                      [] { setAttribute(0); }};
  condition.isPossible = ::geteuid() == 0;
  return condition;
}

Condition withoutDescriptors(const char* name, Condition::When when) {
  Condition condition{name, when, [] { limitDescriptors(true); }, [] { limitDescriptors(false); }};
#if defined(__SANITIZE_ADDRESS__)
  condition.isPossible = false;  // UBSan needs descriptors to check an object
#endif
  return condition;
}

Condition deleted(const char* name, const std::string& path) {
  Condition condition{name, kWhileRunning, [path] { std::filesystem::remove_all(path); }};
  condition.losesEarlierLines = true;
  return condition;
}

std::vector<Condition> allConditions() {
  return {
      onSmallDisk("disk full", kWhileRunning),
      onSmallDisk("disk full at the start", kAtStart),
      onSmallDisk("disk full at a cut", kAtCut),
      {"read-only at the start", kAtStart, [] { makeReadOnly(true); }, [] { makeReadOnly(false); }, mountFolder},
      fault("read-only while running", {EROFS, 1, true, "write"}),
      fault("quota", {EDQUOT, 1, true, "write"}),
      {"limit of the file size", kWhileRunning, [] { limitFileSize(true); }, [] { limitFileSize(false); }},
      deleted("log deleted", logPath()),
      deleted("log folder deleted", folder()),
      {"log renamed", kWhileRunning, [] { renameLog(); }},
      {"log replaced", kWhileRunning,
       [] {
         renameLog();
         support::writeFile(logPath(), "");
       }},
      immutableLog(),
      appendOnly(),
      takenNames(),
      withoutDescriptors("no descriptors at the start", kAtStart),
      withoutDescriptors("no descriptors at a cut", kAtCut),
      {"no semaphore sets at the start", kAtStart, takeAllSets, returnSets},
      {"clock back", kWhileRunning, [] { advanceClocks(-hours(1)); }},
      {"clock forth", kWhileRunning, [] { advanceClocks(hours(1000)); }},
  };
}

}  // namespace

void runConditions(Table& table, Scale scale) {
  for (const Condition& condition : allConditions())
    run(table, scale, condition);
}

}  // namespace torture
