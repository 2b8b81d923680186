#include "platform/ProcessList.h"

#include <sys/sysctl.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstring>

namespace platform {
namespace {

// What the kernel has under this name; nothing when it does not tell.
std::vector<char> kernelsAnswer(std::vector<int> name) {
  constexpr int mostTries = 100;
  const auto length = static_cast<u_int>(name.size());
  for (int tries = 0; tries < mostTries; ++tries) {
    std::size_t size = 0;
    if (::sysctl(name.data(), length, nullptr, &size, nullptr, 0) != 0 || size == 0) return {};
    std::vector<char> answer(size);
    if (::sysctl(name.data(), length, answer.data(), &size, nullptr, 0) == 0) {
      answer.resize(size);
      return answer;
    }
    if (errno != ENOMEM) return {};  // it may have grown meanwhile
  }
  return {};
}

}  // namespace

std::vector<pid_t> allProcesses() {
  const std::vector<char> answer = kernelsAnswer({CTL_KERN, KERN_PROC, KERN_PROC_ALL});
  std::vector<pid_t> processes;
  for (std::size_t at = 0; at + sizeof(kinfo_proc) <= answer.size(); at += sizeof(kinfo_proc)) {
    kinfo_proc process;
    std::memcpy(&process, answer.data() + at, sizeof process);
    processes.push_back(process.kp_proc.p_pid);
  }
  return processes;
}

std::string programOf(pid_t process) {
  const std::vector<char> area = kernelsAnswer({CTL_KERN, KERN_PROCARGS, process});
  return std::string(area.begin(), std::find(area.begin(), area.end(), '\0'));
}

}  // namespace platform
