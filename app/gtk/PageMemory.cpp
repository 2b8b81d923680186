#include "app/gtk/PageMemory.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <string>
#include <vector>

// The field has no other name in glibc.
#ifndef sigev_notify_thread_id
#define sigev_notify_thread_id _sigev_un._tid
#endif

namespace {

constexpr long kIntervalNanoseconds = 50'000'000;  // of a process's processor time

// Returns whether the timer exists: the user may have too many, or the process has ended.
bool startTimer(pid_t process, int signal, timer_t& timer) {
  clockid_t processorTime{};
  if (::clock_getcpuclockid(process, &processorTime) != 0) return false;
  sigevent event{};
  event.sigev_notify = SIGEV_THREAD_ID;
  event.sigev_signo = signal;
  event.sigev_notify_thread_id = static_cast<pid_t>(::syscall(SYS_gettid));
  if (::timer_create(processorTime, &event, &timer) != 0) return false;
  const itimerspec interval{{0, kIntervalNanoseconds}, {0, kIntervalNanoseconds}};
  (void)::timer_settime(timer, 0, &interval, nullptr);
  return true;
}

}  // namespace

MemoryFigures readMemoryFigures(int statm) {
  std::array<char, 128> text{};
  MemoryFigures figures;
  if (::pread(statm, text.data(), text.size() - 1, 0) <= 0) return {};
  return std::sscanf(text.data(), "%*d %ld %ld", &figures.resident, &figures.shared) == 2 ? figures : MemoryFigures{};
}

PageMemory::Process::Process(pid_t id, int signal)
    : id_(id),
      figures_(::open(("/proc/" + std::to_string(id) + "/statm").c_str(), O_RDONLY | O_CLOEXEC)),
      hasTimer_(startTimer(id, signal, timer_)) {}

PageMemory::Process::~Process() {
  if (hasTimer_) ::timer_delete(timer_);
}

long PageMemory::Process::resident() const {
  return readMemoryFigures(figures_.get()).resident;
}

void PageMemory::search() {
  processes_.remove_if([](const Process& each) { return each.hasEnded(); });
  for (const Descendant& found : webKitProcesses()) {
    const bool isKnown = std::any_of(processes_.begin(), processes_.end(),
                                     [&found](const Process& each) { return each.id() == found.id; });
    if (!isKnown) processes_.emplace_back(found.id, signal_);
  }
}

long PageMemory::resident() const {
  long sum = 0;
  for (const Process& each : processes_)
    sum += each.resident();
  return sum * ::sysconf(_SC_PAGESIZE);
}
