#include "tests/tools/support/ChildProcess.h"

#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <stdexcept>

#include "platform/UniqueFd.h"
#include "tests/tools/support/EventLoop.h"

namespace tools {
namespace {

// Longer than the orderly end of a program takes, which a second signal could cut short.
constexpr std::chrono::seconds kSignalInterval{30};

// The child must not outlive a killed test.
void endWithTheParent(gpointer) {
  (void)prctl(PR_SET_PDEATHSIG, SIGTERM);
}

platform::Owned<GSubprocessLauncher> makeLauncher(const ChildProcess::Setup& setup) {
  platform::Owned<GSubprocessLauncher> launcher(g_subprocess_launcher_new(G_SUBPROCESS_FLAGS_NONE));
  g_subprocess_launcher_set_child_setup(launcher.get(), endWithTheParent, nullptr, nullptr);
  for (const auto& [name, value] : setup.environment) {
    g_subprocess_launcher_setenv(launcher.get(), name.c_str(), value.c_str(), TRUE);
  }
  if (!setup.outputFile.empty()) g_subprocess_launcher_set_stdout_file_path(launcher.get(), setup.outputFile.c_str());
  if (!setup.errorFile.empty()) g_subprocess_launcher_set_stderr_file_path(launcher.get(), setup.errorFile.c_str());
  if (setup.fd >= 0) g_subprocess_launcher_take_fd(launcher.get(), setup.fd, setup.fdInChild);
  return launcher;
}

platform::Owned<GSubprocess> start(const ChildProcess::Setup& setup) {
  std::vector<const char*> arguments;
  for (const std::string& argument : setup.command)
    arguments.push_back(argument.c_str());
  arguments.push_back(nullptr);

  g_autoptr(GError) error = nullptr;
  GSubprocess* process = g_subprocess_launcher_spawnv(makeLauncher(setup).get(), arguments.data(), &error);
  if (process == nullptr) throw std::runtime_error(error->message);

  // The result is not used: waiting makes the child's end an event of this context.
  g_subprocess_wait_async(process, nullptr, nullptr, nullptr);
  return platform::Owned<GSubprocess>(process);
}

}  // namespace

bool endsWithin(pid_t process, std::chrono::milliseconds timeout) {
  const platform::UniqueFd fd(static_cast<int>(syscall(SYS_pidfd_open, process, 0)));
  return !fd || waitUntilReadable(fd.get(), timeout);
}

ChildProcess::ChildProcess(const Setup& setup) : process_(start(setup)) {
  const char* pid = g_subprocess_get_identifier(process_.get());
  pid_ = pid == nullptr ? 0 : static_cast<pid_t>(std::stol(pid));
}

// The X server loses a signal that arrives between its check for signals and its wait for clients.
ChildProcess::~ChildProcess() {
  for (const int number : {SIGTERM, SIGTERM, SIGKILL}) {
    signal(number);
    if (ended() || endsWithin(pid_, kSignalInterval)) break;
  }
  (void)g_subprocess_wait(process_.get(), nullptr, nullptr);
}

bool ChildProcess::ended() const {
  return g_subprocess_get_identifier(process_.get()) == nullptr;
}

void ChildProcess::signal(int number) {
  g_subprocess_send_signal(process_.get(), number);
}

std::optional<int> ChildProcess::exitStatus() const {
  if (!ended() || !g_subprocess_get_if_exited(process_.get())) return std::nullopt;
  return g_subprocess_get_exit_status(process_.get());
}

}  // namespace tools
