#include "platform/Machine.h"

#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cctype>
#include <charconv>

namespace platform {
namespace {

std::atomic<pid_t> cachedProcessId{0};

void clearInChild() {
  cachedProcessId = 0;
}

}  // namespace

std::optional<SystemVersion> systemVersionOfRelease(std::string_view release) {
  SystemVersion version;
  const char* next = release.data();
  const char* const end = next + release.size();
  for (int* number : {&version.major, &version.minor, &version.bugFix}) {
    // `from_chars` accepts a minus sign, which is not part of a version.
    const bool isNumber = next != end && std::isdigit(static_cast<unsigned char>(*next)) != 0;
    const auto [rest, error] = std::from_chars(next, isNumber ? end : next, *number);
    if (error != std::errc()) return number == &version.major ? std::nullopt : std::optional(version);
    if (rest == end || *rest != '.') return version;
    next = rest + 1;
  }
  return version;
}

pid_t currentProcessId() {
  const pid_t cached = cachedProcessId.load(std::memory_order_relaxed);
  if (cached != 0) return cached;
  [[maybe_unused]] static const int registered = ::pthread_atfork(nullptr, nullptr, clearInChild);
  cachedProcessId = ::getpid();
  return ::getpid();
}

}  // namespace platform
