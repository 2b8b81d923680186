#include "bench/window/ProcessFamily.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

// Some versions of the header have no C linkage for C++.
extern "C" {
#include <sys/pidfd.h>
}

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/UniqueFd.h"

namespace bench {
namespace {

constexpr char kVariable[] = "SVO_BENCH_FAMILY";
constexpr int kTimeoutMs = 10'000;
constexpr double kBytesPerKilobyte = 1024;
constexpr double kBytesPerMegabyte = 1e6;

std::string contents(const std::string& path) {
  std::ifstream file(path);
  return {std::istreambuf_iterator<char>(file), {}};
}

std::string processFile(pid_t process, const char* name) {
  return "/proc/" + std::to_string(process) + "/" + name;
}

// Each variable ends with a NUL.
bool hasVariable(pid_t process, const std::string& variable) {
  const std::string all = '\0' + contents(processFile(process, "environ"));
  return all.find('\0' + variable + '\0') != std::string::npos;
}

double proportionalBytes(pid_t process) {
  constexpr char kName[] = "\nPss:";
  const std::string sizes = contents(processFile(process, "smaps_rollup"));
  const std::string::size_type at = sizes.find(kName);
  return at == std::string::npos ? 0 : std::atof(sizes.c_str() + at + sizeof kName - 1) * kBytesPerKilobyte;
}

bool hasEnded(const platform::UniqueFd& process) {
  pollfd end = {process.get(), POLLIN, 0};
  return ::poll(&end, 1, kTimeoutMs) == 1;
}

}  // namespace

ProcessFamily::ProcessFamily() {
  static int last = 0;
  mark_ = std::to_string(::getpid()) + "-" + std::to_string(++last);
}

std::pair<std::string, std::string> ProcessFamily::mark() const {
  return {kVariable, mark_};
}

double ProcessFamily::memory() const {
  double bytes = 0;
  for (const pid_t process : members())
    bytes += proportionalBytes(process);
  return bytes / kBytesPerMegabyte;
}

void ProcessFamily::end() const {
  for (const pid_t member : members()) {
    const platform::UniqueFd process(::pidfd_open(member, 0));
    if (!process) continue;
    (void)::pidfd_send_signal(process.get(), SIGTERM, nullptr, 0);  // fails only if it has ended
    if (!hasEnded(process))
      throw std::runtime_error("process " + std::to_string(member) + " does not end after SIGTERM");
  }
}

std::vector<pid_t> ProcessFamily::members() const {
  std::vector<pid_t> result;
  for (const auto& entry : std::filesystem::directory_iterator("/proc")) {
    const pid_t process = std::atoi(entry.path().filename().c_str());
    if (process > 0 && hasVariable(process, std::string(kVariable) + "=" + mark_)) result.push_back(process);
  }
  return result;
}

}  // namespace bench
