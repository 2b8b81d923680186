#include "app/gtk/MemoryWatch.h"

#include <fcntl.h>
#include <gdk/gdk.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <chrono>
#include <optional>
#include <utility>

#include "app/gtk/Descendants.h"
#include "app/gtk/PageMemory.h"

namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

constexpr milliseconds kInterval{10};
constexpr milliseconds kSearchDelay{250};
constexpr long kMaxGrowth = 64L << 20;     // bytes, without the pictures of the page
constexpr long kMaxPageMemory = 1L << 30;  // bytes
constexpr long kBytesPerPixel = 4;

// In pages; 0 if unknown.
long unsharedMemory(int statm) {
  const MemoryFigures figures = readMemoryFigures(statm);
  return figures.resident - figures.shared;
}

// A window that fills the screen keeps two pictures of its page.
long pictures() {
  GdkWindow* const screen = gdk_get_default_root_window();
  const long scale = gdk_window_get_scale_factor(screen);
  return 2 * kBytesPerPixel * scale * scale * gdk_window_get_width(screen) * gdk_window_get_height(screen);
}

void killPages() {
  for (const Descendant& each : webKitProcesses()) {
    if (each.program != kPageProgram) continue;
    (void)::syscall(SYS_pidfd_send_signal, each.handle.get(), SIGKILL, nullptr, 0);
  }
}

// The signal that wakes the thread, which blocks it.
int wakeSignal() {
  return SIGRTMIN;
}

void waitForSignal(std::optional<milliseconds> timeout) {
  sigset_t wake;
  (void)::sigemptyset(&wake);
  (void)::sigaddset(&wake, wakeSignal());
  const milliseconds time = timeout.value_or(milliseconds::zero());
  const timespec limit{time.count() / 1000, time.count() % 1000 * 1'000'000};
  (void)::sigtimedwait(&wake, nullptr, timeout ? &limit : nullptr);
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
  closing_ = true;
  wake();
  thread_.join();
}

void MemoryWatch::wake() {
  (void)::pthread_kill(thread_.native_handle(), wakeSignal());
}

void MemoryWatch::run() {
  watchMemory();
  if (closing_) return;
  exceeded_ = true;
  killPages();
  g_main_context_wakeup(nullptr);
}

// Returns when the page needs too much memory, or when the watch is closed.
void MemoryWatch::watchMemory() {
  PageMemory page(wakeSignal());
  std::optional<steady_clock::time_point> search;  // when to look for new processes of WebKit
  while (!closing_) {
    const bool busy = takeActivity();
    const auto now = steady_clock::now();
    if (busy && !search) search = now + kSearchDelay;  // WebKit starts none while the main loop waits
    if (search && now >= *search) {
      page.search();
      search.reset();
    }
    if (unsharedMemory(figures_.get()) > max_ || page.resident() > kMaxPageMemory) return;

    if (busy) {
      waitForSignal(kInterval);
    } else if (search) {
      waitForSignal(std::chrono::ceil<milliseconds>(*search - now));
    } else {
      sleep();
    }
  }
}

// Returns whether the main loop has been busy since the last call, or is.
bool MemoryWatch::takeActivity() {
  return iterated_.exchange(false) || !waiting_;
}

// Until the main loop is busy or a process of WebKit has computed.
void MemoryWatch::sleep() {
  sleeping_ = true;
  if (!iterated_ && waiting_ && !closing_) waitForSignal(std::nullopt);
  sleeping_ = false;
}

// Before the main loop waits.
gboolean MemoryWatch::onPrepare(GSource* source, int* timeout) {
  MemoryWatch* const watch = reinterpret_cast<Source*>(source)->watch;
  *timeout = -1;
  watch->waiting_ = true;
  return watch->exceeded_;
}

// After it.
gboolean MemoryWatch::onCheck(GSource* source) {
  MemoryWatch* const watch = reinterpret_cast<Source*>(source)->watch;
  watch->waiting_ = false;
  watch->iterated_ = true;
  if (watch->sleeping_.exchange(false)) watch->wake();
  return watch->exceeded_;
}

gboolean MemoryWatch::onDispatch(GSource* source, GSourceFunc, gpointer) {
  reinterpret_cast<Source*>(source)->watch->onExceeded_();
  return G_SOURCE_REMOVE;
}
