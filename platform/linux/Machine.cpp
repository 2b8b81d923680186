#include "platform/Machine.h"

#include <elf.h>
#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <thread>

#include "platform/Path.h"
#include "platform/UniqueFd.h"
#include "platform/linux/Machine.h"

namespace platform {
namespace {

Architecture architectureOf(unsigned machine, unsigned char elfClass) {
  switch (machine) {
    case EM_386:
      return Architecture::kX86;
    case EM_X86_64:
      return elfClass == ELFCLASS64 ? Architecture::kX64 : Architecture::kOther;
    case EM_PPC:
      return Architecture::kPpc;
    case EM_PPC64:
      return Architecture::kPpc64;
    default:
      return Architecture::kOther;
  }
}

constexpr const char* kSelf = "/proc/self/exe";

bool wasRemoved() {
  struct stat executable {};
  return ::stat(kSelf, &executable) == 0 && executable.st_nlink == 0;
}

thread_local std::uint64_t cachedId = 0;

// The forking thread is the only thread of the child and has a new number there.
void clearInChild() {
  cachedId = 0;
}

std::uint64_t queryThreadId() {
  [[maybe_unused]] static const int registered = ::pthread_atfork(nullptr, nullptr, clearInChild);
  return static_cast<std::uint64_t>(::gettid());
}

class BlockedSignals {
 public:
  BlockedSignals() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &previous_);
  }
  BlockedSignals(const BlockedSignals&) = delete;
  BlockedSignals& operator=(const BlockedSignals&) = delete;
  ~BlockedSignals() { ::pthread_sigmask(SIG_SETMASK, &previous_, nullptr); }

 private:
  sigset_t previous_;
};

}  // namespace

std::vector<Architecture> architecturesOf(const std::string& file) {
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  // 32-bit and 64-bit headers are identical up to the machine.
  std::array<unsigned char, offsetof(Elf64_Ehdr, e_machine) + 2> header{};
  ssize_t count = -1;
  do {
    count = ::pread(fd.get(), header.data(), header.size(), 0);
  } while (count < 0 && errno == EINTR);
  if (count != static_cast<ssize_t>(header.size()) || std::memcmp(header.data(), ELFMAG, SELFMAG) != 0) return {};
  const unsigned first = header[header.size() - 2], second = header[header.size() - 1];
  const unsigned machine = header[EI_DATA] == ELFDATA2MSB ? first << 8 | second : second << 8 | first;
  return {architectureOf(machine, header[EI_CLASS])};
}

std::string executablePath() {
  std::error_code failed;
  std::string path = std::filesystem::read_symlink(kSelf, failed).string();
  constexpr std::string_view kMark = " (deleted)";
  const bool marked = path.size() > kMark.size() && path.compare(path.size() - kMark.size(), kMark.size(), kMark) == 0;
  if (marked && wasRemoved()) path.resize(path.size() - kMark.size());
  return path;
}

std::string bundlePath() {
  return deletingLastPathComponent(executablePath());
}

std::vector<Architecture> executableArchitectures() {
  return architecturesOf(kSelf);
}

std::optional<SystemVersion> systemVersion() {
  utsname system{};
  if (::uname(&system) != 0) return std::nullopt;
  return systemVersionOfRelease(system.release);
}

std::optional<int> systemVersionPart(VersionPart part) {
  const std::optional<SystemVersion> version = systemVersion();
  if (!version) return std::nullopt;
  switch (part) {
    case VersionPart::kMajor:
      return version->major;
    case VersionPart::kMinor:
      return version->minor;
    case VersionPart::kBugFix:
      return version->bugFix;
  }
  return std::nullopt;
}

std::uint64_t currentThreadId() {
  if (cachedId == 0) cachedId = queryThreadId();
  return cachedId;
}

bool runDetached(const std::function<void()>& work) {
  const BlockedSignals signals;
  try {
    std::thread(work).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

}  // namespace platform
