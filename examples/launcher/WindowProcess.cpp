#include "examples/launcher/WindowProcess.h"

#include <signal.h>
#include <spawn.h>
#include <sys/select.h>
#include <sys/wait.h>

#include <cerrno>
#include <system_error>

extern char** environ;

namespace launcher {
namespace {

constexpr int kSignals[] = {SIGCHLD, SIGINT, SIGTERM};

volatile sig_atomic_t toldToStop = 0;

void onSignal(int number) {
  if (number != SIGCHLD) toldToStop = 1;
}

// The signals stay blocked but inside pselect(): none can slip in between a look at the window and the wait that
// follows. Returns the signal mask as it was.
sigset_t watchForSignals() {
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : kSignals) {
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigaction(number, &action, nullptr);
    sigaddset(&signals, number);
  }
  sigset_t before;
  sigprocmask(SIG_BLOCK, &signals, &before);
  return before;
}

pid_t start(const std::vector<std::string>& command, const sigset_t& mask) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& argument : command)
    arguments.push_back(const_cast<char*>(argument.c_str()));
  arguments.push_back(nullptr);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setsigmask(&attributes, &mask);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
  pid_t pid = -1;
  const int problem = posix_spawn(&pid, arguments[0], nullptr, &attributes, arguments.data(), environ);
  posix_spawnattr_destroy(&attributes);
  if (problem != 0) throw std::system_error(problem, std::generic_category(), command[0]);
  return pid;
}

}  // namespace

WindowProcess::WindowProcess(const std::vector<std::string>& command) : pid_(start(command, watchForSignals())) {}

WindowProcess::~WindowProcess() {
  while (pid_ > 0 && waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
  }
}

bool WindowProcess::waitForDataOrEnd(int fd) {
  sigset_t open;
  sigprocmask(SIG_SETMASK, nullptr, &open);
  for (const int number : kSignals)
    sigdelset(&open, number);
  while (!hasEnded()) {
    if (toldToStop) kill(pid_, SIGTERM);
    fd_set readable;
    FD_ZERO(&readable);
    FD_SET(fd, &readable);
    if (pselect(fd + 1, &readable, nullptr, nullptr, nullptr, &open) > 0) return true;
  }
  return false;
}

bool WindowProcess::hasEnded() {
  if (pid_ > 0 && waitpid(pid_, nullptr, WNOHANG) == pid_) pid_ = -1;
  return pid_ < 0;
}

}  // namespace launcher
