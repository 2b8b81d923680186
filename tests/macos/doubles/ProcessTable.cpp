#include "tests/macos/doubles/ProcessTable.h"

#include <sys/sysctl.h>

#include <cerrno>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <system_error>
#include <vector>

#include "tests/macos/doubles/SystemDoubles.h"

namespace {

namespace fs = std::filesystem;

std::string processTable() {
  std::string table;
  std::error_code failed;
  for (const fs::directory_entry& entry : fs::directory_iterator("/proc", failed)) {
    const std::string name = entry.path().filename();
    kinfo_proc process{};
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), process.kp_proc.p_pid);
    if (error != std::errc() || *end != '\0') continue;
    table.append(reinterpret_cast<const char*>(&process), sizeof process);
  }
  return table;
}

// Returns the program's path and its arguments; no value for a process without a program.
std::optional<std::string> argumentAreaOf(int process) {
  if (doubles::argumentArea) return doubles::argumentArea;
  const fs::path folder = "/proc/" + std::to_string(process);
  std::error_code failed;
  const std::string program = fs::read_symlink(folder / "exe", failed);
  if (failed) return std::nullopt;
  std::ifstream arguments(folder / "cmdline", std::ios::binary);
  return program + '\0' + std::string(std::istreambuf_iterator<char>(arguments), {});
}

std::optional<std::string> tableOf(const std::vector<int>& name) {
  if (name == std::vector{CTL_KERN, KERN_PROC, KERN_PROC_ALL}) return processTable();
  if (name.size() == 3 && name[0] == CTL_KERN && name[1] == KERN_PROCARGS) return argumentAreaOf(name[2]);
  return std::nullopt;
}

int failed(int error) {
  errno = error;
  return -1;
}

}  // namespace

int sysctl(int* name, u_int namelen, void* oldp, std::size_t* oldlenp, void*, std::size_t) {
  const std::string call = oldp == nullptr ? "sysctl size" : "sysctl";
  if (const int error = doubles::statusOf(call)) return failed(error);

  const std::optional<std::string> table = tableOf({name, name + namelen});
  if (!table) return failed(EINVAL);
  if (oldp == nullptr) {
    *oldlenp = table->size() + 4096;  // the kernel also adds space for new processes
    return 0;
  }
  if (doubles::tableGrowths > 0) {
    --doubles::tableGrowths;
    return failed(ENOMEM);
  }
  if (table->size() > *oldlenp) return failed(ENOMEM);
  std::memcpy(oldp, table->data(), table->size());
  *oldlenp = table->size();
  return 0;
}
