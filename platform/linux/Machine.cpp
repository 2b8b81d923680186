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

Architecture architectureOf(unsigned machine, unsigned char wordClass) {
  switch (machine) {
    case EM_386:
      return Architecture::kX86;
    case EM_X86_64:
      return wordClass == ELFCLASS64 ? Architecture::kX86_64 : Architecture::kOther;
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

thread_local std::uint64_t knownId = 0;

// Only the forking thread lives on in the child, under a new number.
void forgetInChild() {
  knownId = 0;
}

std::uint64_t askSystem() {
  [[maybe_unused]] static const int registered = ::pthread_atfork(nullptr, nullptr, forgetInChild);
  return static_cast<std::uint64_t>(::gettid());
}

class SignalsBlocked {
 public:
  SignalsBlocked() {
    sigset_t all;
    ::sigfillset(&all);
    ::pthread_sigmask(SIG_SETMASK, &all, &former_);
  }
  SignalsBlocked(const SignalsBlocked&) = delete;
  SignalsBlocked& operator=(const SignalsBlocked&) = delete;
  ~SignalsBlocked() { ::pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

 private:
  sigset_t former_;
};

}  // namespace

std::vector<Architecture> architecturesOf(const std::string& file) {
  const UniqueFd fd(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  // Both word sizes begin alike, as far as the machine.
  std::array<unsigned char, offsetof(Elf64_Ehdr, e_machine) + 2> header{};
  ssize_t got = -1;
  do {
    got = ::pread(fd.get(), header.data(), header.size(), 0);
  } while (got < 0 && errno == EINTR);
  if (got != static_cast<ssize_t>(header.size()) || std::memcmp(header.data(), ELFMAG, SELFMAG) != 0) return {};
  const unsigned first = header[header.size() - 2], second = header[header.size() - 1];
  const unsigned machine = header[EI_DATA] == ELFDATA2MSB ? first << 8 | second : second << 8 | first;
  return {architectureOf(machine, header[EI_CLASS])};
}

std::string executablePath() {
  std::error_code failed;
  std::string path = std::filesystem::read_symlink(kSelf, failed).string();
  constexpr std::string_view mark = " (deleted)";
  const bool marked = path.size() > mark.size() && path.compare(path.size() - mark.size(), mark.size(), mark) == 0;
  if (marked && wasRemoved()) path.resize(path.size() - mark.size());
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
  if (knownId == 0) knownId = askSystem();
  return knownId;
}

bool runDetached(const std::function<void()>& work) {
  const SignalsBlocked duringTheStart;
  try {
    std::thread(work).detach();
  } catch (const std::system_error&) {
    return false;
  }
  return true;
}

}  // namespace platform
