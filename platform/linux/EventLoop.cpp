#include "platform/EventLoop.h"

#include <unistd.h>

#include <thread>

#include "platform/linux/Glib.h"

namespace platform {
namespace {

// Null if the thread has none.
Owned<GMainContext, g_main_context_unref> contextOfThread() {
  Owned<GMainContext, g_main_context_unref> context(g_main_context_ref_thread_default());
  const bool firstThread = ::gettid() == ::getpid();
  if (context.get() == g_main_context_default() && !firstThread) return nullptr;
  return context;
}

gboolean onExpired(gpointer expired) {
  *static_cast<bool*>(expired) = true;
  return G_SOURCE_CONTINUE;
}

}  // namespace

void runLoopFor(std::chrono::milliseconds duration) {
  const Owned<GMainContext, g_main_context_unref> context = contextOfThread();
  if (!context || !g_main_context_acquire(context.get())) {
    std::this_thread::sleep_for(duration);
    return;
  }
  bool expired = false;
  const Owned<GSource, g_source_unref> timer(g_timeout_source_new(static_cast<guint>(duration.count())));
  g_source_set_callback(timer.get(), onExpired, &expired, nullptr);
  g_source_attach(timer.get(), context.get());
  while (!expired)
    g_main_context_iteration(context.get(), TRUE);
  g_source_destroy(timer.get());
  g_main_context_release(context.get());
}

void* openAutoreleasePool() {
  static char token;
  return &token;
}

void closeAutoreleasePool(void* /*pool*/) {}

}  // namespace platform
