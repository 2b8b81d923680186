#include "app/gtk/Descendants.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "platform/Processes.h"

namespace {

// A child is listed under the thread that started it.
void addChildren(std::vector<pid_t>& processes, pid_t parent) {
  std::error_code failed;
  std::filesystem::directory_iterator thread("/proc/" + std::to_string(parent) + "/task", failed);
  for (; !failed && thread != std::filesystem::directory_iterator(); thread.increment(failed)) {
    std::ifstream children(thread->path() / "children");
    for (pid_t child = 0; children >> child;)
      processes.push_back(child);
  }
}

}  // namespace

// A pidfd that was opened before its program is read cannot be of a later process with the same number.
std::vector<Descendant> webKitProcesses() {
  std::vector<Descendant> found;
  std::vector<pid_t> processes;
  addChildren(processes, ::getpid());
  for (std::size_t i = 0; i < processes.size(); ++i) {
    const pid_t each = processes[i];
    // Several releases of glibc declare pidfd_open without C linkage.
    platform::UniqueFd handle(static_cast<int>(::syscall(SYS_pidfd_open, each, 0)));
    std::string program = std::filesystem::path(platform::programOf(each)).filename();
    const bool matches = program == kPageProgram || program == kNetworkProgram;
    if (handle && matches) found.push_back({std::move(program), each, std::move(handle)});
    addChildren(processes, each);
  }
  return found;
}
