#include "tests/torture/Scene.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/sem.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "applog/Logger.h"
#include "platform/UniqueFd.h"
#include "tests/processes/WriteLine.h"
#include "tests/support/Files.h"
#include "tests/support/Home.h"
#include "tests/torture/Faults.h"

namespace torture {
namespace {

using support::Child;

constexpr int kSecondsToRecover = 65;
constexpr std::uintmax_t kFullSize = 10 * 1024 * 1024;

void removeSets() {
  std::ifstream table("/proc/sysvipc/sem");
  std::string row;
  std::getline(table, row);  // the head
  for (int key = 0, id = 0; std::getline(table, row) && std::sscanf(row.c_str(), "%d %d", &key, &id) == 2;)
    (void)::semctl(id, 0, IPC_RMID);
}

// The library that replaces the user database reports every fault on standard error.
std::string errorsPath() {
  return support::ownHome() + "/errors";
}

void keepErrors() {
  const platform::UniqueFd file(::open(errorsPath().c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600));
  (void)::dup2(file.get(), STDERR_FILENO);
}

}  // namespace

void Writer::start() {
  Logger::getInstance()->setLogLevel(Log_Level_Info, nullptr, nullptr);
}

void Writer::line() {
  const int number = ++progress_.begun;
  processes::writeLine(processes::messageOf(name_, number));
  progress_.acknowledged = number;
}

void Writer::lines(int count) {
  for (int i = 0; i < count; ++i)
    line();
}

void Writer::recover() {
  for (int seconds = 0; seconds <= kSecondsToRecover; ++seconds) {
    line();
    const int number = progress_.begun;
    if (isInLog(number)) {
      progress_.exemptTo = number;
      progress_.recovered = seconds;
      return;
    }
    advanceClocks(std::chrono::seconds(1));
  }
  progress_.exemptTo = progress_.begun + 1;
  progress_.recovered = kNever;
}

// Looks at the end of the log only.
bool Writer::isInLog(int number) const {
  constexpr std::streamoff kEndSize = 128 * 1024;
  std::ifstream log(logPath(), std::ios::binary | std::ios::ate);
  if (!log) return false;
  log.seekg(std::max<std::streamoff>(0, log.tellg() - kEndSize));
  const std::string end(std::istreambuf_iterator<char>(log), {});
  return end.find(processes::messageOf(name_, number) + "\n") != std::string::npos;
}

std::string logPath() {
  return support::ownLogFolder() + "/Kelvo.log";
}

void reset() {
  while (::umount2(support::ownLogFolder().c_str(), MNT_DETACH) == 0) {
  }
  (void)support::freshHome();
  removeSets();
}

void makeLogFolder() {
  std::filesystem::create_directories(support::ownLogFolder());
}

void fillLog(const std::string& path) {
  const platform::UniqueFd log(::open(path.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
  std::filesystem::resize_file(path, kFullSize);
  (void)!::write(log.get(), "\n", 1);
}

std::vector<std::string> nextArchiveNames() {
  std::vector<std::string> names;
  for (std::time_t second = std::time(nullptr); names.size() < 10; ++second) {
    char name[64];
    std::tm local{};
    ::localtime_r(&second, &local);
    std::strftime(name, sizeof name, "Kelvo %m-%d-%Y %H-%M-%S.log", &local);
    names.emplace_back(name);
  }
  return names;
}

void makeCutDue(Writer& writer) {
  fillLog();
  advanceClocks(std::chrono::hours(2));
  writer.line();
}

int statusOf(Child& process, const std::function<int()>& progress) {
  const platform::UniqueFd handle(static_cast<int>(::syscall(SYS_pidfd_open, process.id(), 0)));
  const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(hangLimit);
  pollfd ended{handle.get(), POLLIN, 0};
  for (int before = progress(); ::poll(&ended, 1, static_cast<int>(limit.count())) != 1;) {
    if (const int now = progress(); now != before) {
      before = now;
      continue;
    }
    process.kill();
    process.wait();
    return kHung;
  }
  return process.wait();
}

void addEnd(Row& row, int status) {
  if (status == kHung) ++row.hung;
  if (status > 0) ++row.crashed;
}

void addLines(Row& row, const processes::LogLines& found, const std::string& name, const Progress& progress) {
  const processes::WriterLines lines = found.of(name);
  const int from = progress.exemptFrom;
  const int to = progress.exemptTo;
  const auto isExempt = [&](int number) { return from > 0 && number >= from && (to == 0 || number < to); };
  for (int number = 1; number <= progress.acknowledged; ++number) {
    const bool isLost = number > lines.last || lines.missing.count(number) != 0;
    row.lost += isLost && !isExempt(number) ? 1 : 0;
  }
  row.reordered += lines.reordered;
  row.wrong += progress.wrong;
  row.recovered = std::max<double>(row.recovered, progress.recovered);
}

void runFreshWriter(Row& row, const std::string& name, Progress& progress) {
  const auto begin = std::chrono::steady_clock::now();
  Child process(
      [&] {
        Writer writer(name, progress);
        Writer::start();
        writer.line();
        return 0;
      },
      Child::Ending::kOrderly);
  addEnd(row, statusOf(process));
  const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
  row.recovered = std::max(row.recovered, seconds);
}

void torment(Row& row, const std::function<void(Writer&)>& body) {
  const support::Shared<Progress> progress, fresh;
  Child process(
      [&] {
        keepErrors();
        Writer writer("w", *progress);
        body(writer);
        return 0;
      },
      Child::Ending::kOrderly);
  ++row.tried;
  const int status = statusOf(process);
  addEnd(row, status);
  if (status > 0 && row.crashed == 1)
    std::fprintf(stderr, "-- %s: status %d\n%s", row.name.c_str(), status, support::contentsOf(errorsPath()).c_str());
  runFreshWriter(row, "fresh", *fresh);
  const processes::LogLines found = processes::readLog(support::ownLogFolder());
  addLines(row, found, "w", *progress);
  addLines(row, found, "fresh", *fresh);
  row.glued += found.glued;
}

}  // namespace torture
