#include "platform/Processes.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "platform/linux/Machine.h"

namespace platform {
namespace {

// What the new process does between its start and the program's; the first failure is kept.
class FileActions {
 public:
  FileActions() : error_(::posix_spawn_file_actions_init(&actions_)) {}
  FileActions(const FileActions&) = delete;
  FileActions& operator=(const FileActions&) = delete;
  ~FileActions() { ::posix_spawn_file_actions_destroy(&actions_); }

  void silence() {
    keep(::posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0));
    keep(::posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO));
  }
  void changeFolder(const std::string& folder) {
    keep(::posix_spawn_file_actions_addchdir_np(&actions_, folder.c_str()));
  }
  void closeAllOthers() { keep(::posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1)); }

  int error() const { return error_; }
  const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
  void keep(int error) {
    if (error_ == 0) error_ = error;
  }

  posix_spawn_file_actions_t actions_;
  int error_;
};

class DefaultSignals {
 public:
  DefaultSignals() : error_(::posix_spawnattr_init(&attributes_)) {
    sigset_t all, none;
    ::sigfillset(&all);
    ::sigemptyset(&none);
    ::posix_spawnattr_setsigdefault(&attributes_, &all);
    ::posix_spawnattr_setsigmask(&attributes_, &none);
    ::posix_spawnattr_setflags(&attributes_, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);
  }
  DefaultSignals(const DefaultSignals&) = delete;
  DefaultSignals& operator=(const DefaultSignals&) = delete;
  ~DefaultSignals() { ::posix_spawnattr_destroy(&attributes_); }

  int error() const { return error_; }
  const posix_spawnattr_t* get() const { return &attributes_; }

 private:
  posix_spawnattr_t attributes_;
  int error_;
};

std::vector<char*> pointersTo(std::string& program, std::vector<std::string>& arguments) {
  std::vector<char*> pointers{program.data()};
  for (std::string& argument : arguments)
    pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  return pointers;
}

// As `runTask` has it.
int endOf(pid_t process) {
  int status = 0;
  while (::waitpid(process, &status, 0) < 0) {
    if (errno != EINTR) return -1;
  }
  return WIFSIGNALED(status) ? WTERMSIG(status) : WEXITSTATUS(status);
}

const std::filesystem::path kProcesses = "/proc";

}  // namespace

std::optional<int> runTask(const Task& task) {
  const std::optional<pid_t> process = startTask(task);
  if (!process) return std::nullopt;
  return endOf(*process);
}

std::optional<pid_t> startTask(const Task& task) {
  const DefaultSignals signals;
  FileActions actions;
  if (task.silent) actions.silence();
  if (!task.folder.empty()) actions.changeFolder(task.folder);
  actions.closeAllOthers();

  std::string program = resolveProgram(task);
  std::vector<std::string> arguments = task.arguments;
  const std::vector<char*> pointers = pointersTo(program, arguments);
  pid_t process = 0;
  int error = signals.error() != 0 ? signals.error() : actions.error();
  if (error == 0)
    error = ::posix_spawn(&process, program.c_str(), actions.get(), signals.get(), pointers.data(), ::environ);
  if (error == 0) return process;
  errno = error;
  return std::nullopt;
}

void waitForTaskInBackground(pid_t process) {
  // Without a thread the process stays in the table, ended, as long as this one lives: better than not to start it.
  (void)runDetached([process] { (void)endOf(process); });
}

std::vector<pid_t> allProcesses() {
  std::vector<pid_t> processes;
  std::error_code failed;
  for (std::filesystem::directory_iterator entry(kProcesses, failed), end; !failed && entry != end;
       entry.increment(failed)) {
    const std::string name = entry->path().filename().string();
    pid_t process = 0;
    const char* const nameEnd = name.data() + name.size();
    if (std::from_chars(name.data(), nameEnd, process).ptr == nameEnd) processes.push_back(process);
  }
  return processes;
}

std::string programOf(pid_t process) {
  const std::filesystem::path folder = kProcesses / std::to_string(process);
  std::error_code failed;
  std::string path = std::filesystem::read_symlink(folder / "exe", failed).string();
  // What a process calls itself is no reason for the super-user to take it for that.
  if (failed != std::errc::permission_denied || ::geteuid() == 0) return path;
  std::ifstream arguments(folder / "cmdline", std::ios::binary);
  std::getline(arguments, path, '\0');
  return path;
}

}  // namespace platform
