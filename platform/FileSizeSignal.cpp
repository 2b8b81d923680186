#include "platform/FileSizeSignal.h"

#include <signal.h>

#include <atomic>

namespace platform {
namespace {

std::atomic<int> scopes{0};
static_assert(std::atomic<int>::is_always_lock_free);

void onSignal(int number) {
  if (scopes != 0) return;
  struct sigaction standard {};
  standard.sa_handler = SIG_DFL;
  (void)::sigaction(number, &standard, nullptr);
  (void)::raise(number);  // takes effect when this handler returns
}

}  // namespace

void handleFileSizeSignal() {
  struct sigaction current {};
  if (::sigaction(SIGXFSZ, nullptr, &current) != 0 || current.sa_handler != SIG_DFL) return;
  current = {};
  current.sa_handler = onSignal;
  current.sa_flags = SA_ONSTACK | SA_RESTART;
  (void)::sigaction(SIGXFSZ, &current, nullptr);
}

FileSizeSignalScope::FileSizeSignalScope() {
  scopes.fetch_add(1, std::memory_order_relaxed);
}

FileSizeSignalScope::~FileSizeSignalScope() {
  scopes.fetch_sub(1, std::memory_order_relaxed);
}

}  // namespace platform
