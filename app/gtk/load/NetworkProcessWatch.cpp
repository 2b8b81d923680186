#include "app/gtk/load/NetworkProcessWatch.h"

#include <glib-unix.h>
#include <sys/syscall.h>
#include <sys/types.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <optional>
#include <system_error>

#include "platform/Processes.h"

namespace {

constexpr guint kRetryMilliseconds = 20;
constexpr int kMaxTries = 3000;

bool isNetworkProcess(pid_t process) {
  return std::filesystem::path(platform::programOf(process)).filename() == "WebKitNetworkProcess";
}

// A child is listed under the thread that started it.
std::optional<pid_t> findNetworkProcess() {
  std::error_code failed;
  std::filesystem::directory_iterator thread("/proc/self/task", failed);
  for (; !failed && thread != std::filesystem::directory_iterator(); thread.increment(failed)) {
    std::ifstream children(thread->path() / "children");
    for (pid_t child = 0; children >> child;) {
      if (isNetworkProcess(child)) return child;
    }
  }
  return std::nullopt;
}

}  // namespace

void NetworkProcessWatch::start() {
  tries_ = 0;
  if (source_ == 0) watch();
}

void NetworkProcessWatch::watch() {
  const std::optional<pid_t> process = findNetworkProcess();
  if (!process) {
    if (++tries_ < kMaxTries) source_ = g_timeout_add(kRetryMilliseconds, onRetry, this);
    return;
  }
  // Several releases of glibc declare pidfd_open without C linkage.
  process_.reset(static_cast<int>(::syscall(SYS_pidfd_open, *process, 0)));
  if (process_) source_ = g_unix_fd_add(process_.get(), G_IO_IN, onReadable, this);
}

gboolean NetworkProcessWatch::onRetry(gpointer self) {
  auto* const watch = static_cast<NetworkProcessWatch*>(self);
  watch->source_ = 0;
  watch->watch();
  return G_SOURCE_REMOVE;
}

// A pidfd is readable once its process has ended.
gboolean NetworkProcessWatch::onReadable(int, GIOCondition, gpointer self) {
  auto* const watch = static_cast<NetworkProcessWatch*>(self);
  watch->source_ = 0;
  watch->cancel();
  watch->onEnded_();
  return G_SOURCE_REMOVE;
}

void NetworkProcessWatch::cancel() {
  if (source_ != 0) g_source_remove(source_);
  source_ = 0;
  process_.reset();
}
