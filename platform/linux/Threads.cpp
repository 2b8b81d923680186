#include "platform/Threads.h"

#include <pthread.h>
#include <unistd.h>

namespace platform {
namespace {

thread_local std::uint64_t knownId = 0;

// Only the forking thread lives on in the child, under a new number.
void forgetInChild() {
  knownId = 0;
}

std::uint64_t askSystem() {
  [[maybe_unused]] static const int registered = ::pthread_atfork(nullptr, nullptr, forgetInChild);
  return static_cast<std::uint64_t>(::gettid());
}

}  // namespace

std::uint64_t currentThreadId() {
  if (knownId == 0) knownId = askSystem();
  return knownId;
}

}  // namespace platform
