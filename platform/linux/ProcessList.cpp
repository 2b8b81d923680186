#include "platform/ProcessList.h"

#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace platform {
namespace {

const std::filesystem::path kProcesses = "/proc";

}  // namespace

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
