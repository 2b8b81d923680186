#include "app/gtk/Sandbox.h"

#include <dirent.h>
#include <fcntl.h>
#include <poll.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "app/gtk/Glib.h"

namespace {

constexpr int kFirstTimeoutSeconds = 2;
constexpr int kSecondTimeoutSeconds = 4;
constexpr char kSandboxFile[] = "/bwrapinfo.json";

struct SandboxFiles {
  std::string folder;
  std::string prefix;  // of the subfolders of this process
};

SandboxFiles sandboxFiles;

bool isInstalled(const char* program) {
  return Owned<char, g_free>(g_find_program_in_path(program)) != nullptr;
}

// The parts of WebKit's sandbox that a machine may refuse: namespaces, mounts, and the user's folders, whose mount
// points are created in the new root.
std::vector<std::string> trialCommand() {
  std::vector<std::string> command = {"bwrap", "--die-with-parent", "--unshare-uts", "--unshare-pid", "--unshare-net"};
  const auto add = [&command](std::initializer_list<std::string> arguments) {
    command.insert(command.end(), arguments.begin(), arguments.end());
  };
  add({"--ro-bind", "/etc", "/etc", "--dev", "/dev", "--proc", "/proc", "--tmpfs", "/tmp"});
  add({"--dir", g_get_user_runtime_dir()});
  add({"--symlink", "../run", "/var/run", "--symlink", "../tmp", "/var/tmp"});
  for (const char* const folder : {"/sys/block", "/sys/bus", "/sys/class", "/sys/dev", "/sys/devices", "/usr"})
    add({"--ro-bind", folder, folder});
  for (const char* const folder : {"/lib", "/lib64"})
    add({"--ro-bind-try", folder, folder});
  for (const char* const folder :
       {g_get_user_config_dir(), g_get_user_cache_dir(), g_get_user_data_dir(), g_get_user_runtime_dir()}) {
    // WebKit uses subfolders; this fails if the folder is a file.
    const std::string below = std::string(folder) + "/svo-signin";
    add({"--bind-try", below, below});
  }
  add({"--bind-try", g_get_user_cache_dir(), g_get_user_cache_dir()});
  add({"/usr/bin/true"});
  return command;
}

GPid start(const std::vector<std::string>& command, int* output) {
  std::vector<char*> arguments;
  arguments.reserve(command.size() + 1);
  for (const std::string& each : command)
    arguments.push_back(const_cast<char*>(each.c_str()));
  arguments.push_back(nullptr);

  GPid process = 0;
  constexpr int kFlags = G_SPAWN_SEARCH_PATH | G_SPAWN_DO_NOT_REAP_CHILD | G_SPAWN_STDERR_TO_DEV_NULL;
  const gboolean started =
      g_spawn_async_with_pipes(nullptr, arguments.data(), nullptr, static_cast<GSpawnFlags>(kFlags), nullptr, nullptr,
                               &process, nullptr, output, nullptr, nullptr);
  return started ? process : 0;
}

}  // namespace

// Makes system calls only.
void removeSandboxFiles() {
  const platform::UniqueFd folder(::open(sandboxFiles.folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!folder) return;
  alignas(dirent64) char entries[4096];
  for (ssize_t size = 0; (size = ::getdents64(folder.get(), entries, sizeof entries)) > 0;) {
    for (ssize_t at = 0; at < size;) {
      const auto* const entry = reinterpret_cast<const dirent64*>(entries + at);
      at += entry->d_reclen;
      const std::string& prefix = sandboxFiles.prefix;
      if (std::strncmp(entry->d_name, prefix.c_str(), prefix.size()) != 0) continue;
      char file[sizeof entry->d_name + sizeof kSandboxFile];
      (void)::stpcpy(::stpcpy(file, entry->d_name), kSandboxFile);
      (void)::unlinkat(folder.get(), file, 0);
      (void)::unlinkat(folder.get(), entry->d_name, AT_REMOVEDIR);
    }
  }
}

// WebKit also needs xdg-dbus-proxy for the session bus. It does not make a compositor's socket outside the runtime
// folder available in the sandbox.
SandboxTrial::SandboxTrial() {
  sandboxFiles = {std::string(g_get_user_runtime_dir()) + "/.flatpak", "webkit-" + std::to_string(::getpid()) + "-"};
  const char* const compositor = g_getenv("WAYLAND_DISPLAY");
  if (compositor != nullptr && g_path_is_absolute(compositor)) {
    failure_ = "WAYLAND_DISPLAY names a socket outside the runtime folder";
  } else if (!isInstalled("bwrap")) {
    failure_ = "bwrap is not installed";
  } else if (!isInstalled("xdg-dbus-proxy")) {
    failure_ = "xdg-dbus-proxy is not installed";
  } else {
    begin();
  }
}

SandboxTrial::~SandboxTrial() {
  if (!failure_) (void)waitForEnd(kFirstTimeoutSeconds);
}

const std::string& SandboxTrial::failure() {
  if (failure_) return *failure_;
  failure_ = waitForEnd(kFirstTimeoutSeconds);
  if (!failure_->empty()) {
    begin();
    failure_ = waitForEnd(kSecondTimeoutSeconds);
  }
  return *failure_;
}

void SandboxTrial::begin() {
  int output = -1;
  process_ = start(trialCommand(), &output);
  ended_.reset(output);
}

std::string SandboxTrial::waitForEnd(int seconds) {
  if (process_ == 0) return "bwrap could not be started";
  pollfd end{ended_.get(), POLLIN, 0};
  int ready = 0;
  while ((ready = ::poll(&end, 1, seconds * 1000)) == -1 && errno == EINTR) {
  }
  const bool timedOut = ready == 0;
  (void)::kill(process_, SIGKILL);  // unless it has ended: a program can also close its output and stay
  ended_.reset();

  int status = -1;
  while (::waitpid(process_, &status, 0) == -1 && errno == EINTR) {
  }
  if (timedOut) return "bwrap did not end within " + std::to_string(seconds) + " seconds";
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0) return {};
  return "bwrap refused to start a program";
}
