#include "app/gtk/MemoryWatch.h"

#include <fcntl.h>
#include <gdk/gdk.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdio>
#include <utility>

#include "app/gtk/Descendants.h"

namespace {

constexpr std::chrono::milliseconds kInterval{10};
constexpr long kMaxGrowth = 64L << 20;  // bytes, without the pictures of the page
constexpr long kBytesPerPixel = 4;

// In pages; 0 if unknown.
long unsharedMemory(int figures) {
  std::array<char, 128> text{};
  long resident = 0, shared = 0;
  if (::pread(figures, text.data(), text.size() - 1, 0) <= 0) return 0;
  return std::sscanf(text.data(), "%*d %ld %ld", &resident, &shared) == 2 ? resident - shared : 0;
}

// A window that fills the screen keeps two pictures of its page.
long pictures() {
  GdkWindow* const screen = gdk_get_default_root_window();
  const long scale = gdk_window_get_scale_factor(screen);
  return 2 * kBytesPerPixel * scale * scale * gdk_window_get_width(screen) * gdk_window_get_height(screen);
}

void killPages() {
  for (const platform::UniqueFd& page : descendantsRunning("WebKitWebProcess"))
    (void)::syscall(SYS_pidfd_send_signal, page.get(), SIGKILL, nullptr, 0);
}

// The handlers of signals expect the main thread.
template <typename Work>
std::thread startWithoutSignals(Work work) {
  sigset_t all, previous;
  (void)::sigfillset(&all);
  (void)::pthread_sigmask(SIG_SETMASK, &all, &previous);
  std::thread thread(std::move(work));
  (void)::pthread_sigmask(SIG_SETMASK, &previous, nullptr);
  return thread;
}

}  // namespace

GSourceFuncs MemoryWatch::functions = {onPrepare, onCheck, onDispatch, nullptr, nullptr, nullptr};

// The source has priority over the messages of the page, which may never end.
MemoryWatch::MemoryWatch(std::function<void()> onExceeded)
    : onExceeded_(std::move(onExceeded)),
      figures_(::open("/proc/self/statm", O_RDONLY | O_CLOEXEC)),
      max_(unsharedMemory(figures_.get()) + (kMaxGrowth + pictures()) / ::sysconf(_SC_PAGESIZE)),
      source_(g_source_new(&functions, sizeof(Source))),
      thread_(startWithoutSignals([this] { run(); })) {
  reinterpret_cast<Source*>(source_)->watch = this;
  g_source_set_priority(source_, G_PRIORITY_HIGH);
  (void)g_source_attach(source_, nullptr);
}

MemoryWatch::~MemoryWatch() {
  g_source_destroy(source_);
  g_source_unref(source_);
  {
    const std::lock_guard lock(mutex_);
    closing_ = true;
  }
  wake_.notify_one();
  thread_.join();
}

void MemoryWatch::run() {
  std::unique_lock lock(mutex_);
  for (;;) {
    wake_.wait(lock, [this] { return closing_ || iterated_ || !waiting_; });
    if (closing_) return;
    iterated_ = false;
    if (unsharedMemory(figures_.get()) > max_) break;
    (void)wake_.wait_for(lock, kInterval, [this] { return closing_; });
  }
  exceeded_ = true;
  lock.unlock();
  killPages();
  g_main_context_wakeup(nullptr);
}

// Before the main loop waits.
gboolean MemoryWatch::onPrepare(GSource* source, int* timeout) {
  MemoryWatch* const watch = reinterpret_cast<Source*>(source)->watch;
  const std::lock_guard lock(watch->mutex_);
  *timeout = -1;
  watch->waiting_ = true;
  return watch->exceeded_;
}

// After it.
gboolean MemoryWatch::onCheck(GSource* source) {
  MemoryWatch* const watch = reinterpret_cast<Source*>(source)->watch;
  const std::lock_guard lock(watch->mutex_);
  watch->waiting_ = false;
  if (!std::exchange(watch->iterated_, true)) watch->wake_.notify_one();
  return watch->exceeded_;
}

gboolean MemoryWatch::onDispatch(GSource* source, GSourceFunc, gpointer) {
  reinterpret_cast<Source*>(source)->watch->onExceeded_();
  return G_SOURCE_REMOVE;
}
