#include "platform/RunLoop.h"

#include <glib.h>
#include <unistd.h>

#include <memory>
#include <thread>

namespace platform {
namespace {

struct Unref {
  void operator()(GMainContext* context) const { g_main_context_unref(context); }
  void operator()(GSource* source) const {
    g_source_destroy(source);
    g_source_unref(source);
  }
};
using Context = std::unique_ptr<GMainContext, Unref>;

// Nothing when the thread has none.
Context contextOfThread() {
  Context context(g_main_context_ref_thread_default());
  const bool firstThread = ::gettid() == ::getpid();
  if (context.get() == g_main_context_default() && !firstThread) return nullptr;
  return context;
}

gboolean noteTime(gpointer over) {
  *static_cast<bool*>(over) = true;
  return G_SOURCE_CONTINUE;
}

}  // namespace

std::chrono::steady_clock::time_point runLoopTime() {
  return std::chrono::steady_clock::now();
}

void runLoopFor(std::chrono::milliseconds duration) {
  const Context context = contextOfThread();
  if (!context || !g_main_context_acquire(context.get())) {
    std::this_thread::sleep_for(duration);
    return;
  }
  bool over = false;
  const std::unique_ptr<GSource, Unref> timer(g_timeout_source_new(static_cast<guint>(duration.count())));
  g_source_set_callback(timer.get(), noteTime, &over, nullptr);
  g_source_attach(timer.get(), context.get());
  while (!over)
    g_main_context_iteration(context.get(), TRUE);
  g_main_context_release(context.get());
}

}  // namespace platform
