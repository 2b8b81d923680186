#include "platform/EventLoop.h"

#include <unistd.h>

#include <thread>

#include "platform/linux/GioHandles.h"

namespace platform {
namespace {

// Nothing when the thread has none.
Owned<GMainContext> contextOfThread() {
  Owned<GMainContext> context(g_main_context_ref_thread_default());
  const bool firstThread = ::gettid() == ::getpid();
  if (context.get() == g_main_context_default() && !firstThread) return nullptr;
  return context;
}

gboolean noteTime(gpointer over) {
  *static_cast<bool*>(over) = true;
  return G_SOURCE_CONTINUE;
}

}  // namespace

void runLoopFor(std::chrono::milliseconds duration) {
  const Owned<GMainContext> context = contextOfThread();
  if (!context || !g_main_context_acquire(context.get())) {
    std::this_thread::sleep_for(duration);
    return;
  }
  bool over = false;
  const Owned<GSource> timer(g_timeout_source_new(static_cast<guint>(duration.count())));
  g_source_set_callback(timer.get(), noteTime, &over, nullptr);
  g_source_attach(timer.get(), context.get());
  while (!over)
    g_main_context_iteration(context.get(), TRUE);
  g_main_context_release(context.get());
}

void* openAutoreleasePool() {
  static char token;
  return &token;
}

void closeAutoreleasePool(void* /*pool*/) {}

}  // namespace platform
