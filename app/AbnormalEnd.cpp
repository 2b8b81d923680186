#include "app/AbnormalEnd.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/types.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdlib>

#include "app/ResultChannel.h"

namespace {

// The signals whose default action is to end the process with a core file.
constexpr std::array kSignals = {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGQUIT, SIGSEGV, SIGSYS, SIGTRAP, SIGXCPU, SIGXFSZ};
static_assert(kSignals.back() == SIGXFSZ);
constexpr std::size_t kStackSize = 64 * 1024;

enum class State { kInactive, kWaiting, kClaimed };

std::atomic<State> state{State::kInactive};
static_assert(std::atomic<State>::is_always_lock_free);

pid_t process = 0;
std::string pipePath;
std::string message;
int keptDescriptor = -1;
void (*cleanUp)() = nullptr;
std::array<struct sigaction, kSignals.size()> formerActions;
std::array<char, kStackSize> stack;  // a handler needs its own stack when the program has used up the other

// Not for a forked child that fails before it executes its program.
bool isThisRun() {
  return ::getpid() == process;
}

void writeMessage() {
  if (isThisRun() && claimMessage()) (void)WriteFIFO(pipePath, message);
}

void onSignal(int number);

// The log has a handler for a file that reaches the limit of file sizes. While a line is written, it keeps the signal's
// action; otherwise it restores the default one.
bool isDealtWith(int number) {
  const struct sigaction& former = formerActions.back();
  if (number != SIGXFSZ || former.sa_handler == SIG_DFL || former.sa_handler == SIG_IGN) return false;
  former.sa_handler(number);
  struct sigaction current {};
  return ::sigaction(number, nullptr, &current) == 0 && current.sa_handler == onSignal;
}

void onSignal(int number) {
  if (isDealtWith(number)) return;
  writeMessage();
  if (isThisRun() && cleanUp != nullptr) cleanUp();
  for (std::size_t i = 0; i < kSignals.size(); ++i) {
    if (kSignals[i] == number) (void)::sigaction(number, &formerActions[i], nullptr);
  }
  (void)::raise(number);  // takes effect when this handler returns
}

}  // namespace

void forbidCoreFiles() {
  constexpr rlimit kNone{0, 0};
  (void)::setrlimit(RLIMIT_CORE, &kNone);
}

void reportAbnormalEnd(const std::string& pipe, void (*afterward)()) {
  std::string none;
  process = ::getpid();
  pipePath = pipe;
  message = ConstructOutputString(kLoadFailed, none);
  cleanUp = afterward;
  keptDescriptor = ::open("/dev/null", O_RDONLY | O_CLOEXEC);
  state = State::kWaiting;
  (void)std::atexit(writeMessage);

  stack_t handlerStack{};
  handlerStack.ss_sp = stack.data();
  handlerStack.ss_size = stack.size();
  (void)::sigaltstack(&handlerStack, nullptr);

  struct sigaction action {};
  action.sa_handler = onSignal;
  action.sa_flags = SA_ONSTACK;
  for (std::size_t i = 0; i < kSignals.size(); ++i)
    (void)::sigaction(kSignals[i], &action, &formerActions[i]);
}

bool claimMessage() {
  State expected = State::kWaiting;
  if (!state.compare_exchange_strong(expected, State::kClaimed)) return expected == State::kInactive;
  if (keptDescriptor != -1) (void)::close(keptDescriptor);
  return true;
}
