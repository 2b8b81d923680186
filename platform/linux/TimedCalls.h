// Calls of GIO's that are over in time, whoever does not answer.

#pragma once

#include <gio/gio.h>

#include <chrono>
#include <utility>

#include "platform/linux/GioHandles.h"

namespace platform {

// Runs asynchronous calls one after the other in a context of their own, so that no event of the caller's is served
// meanwhile. All together have the time given; what is under way then is cancelled.
class TimedCalls {
 public:
  explicit TimedCalls(std::chrono::milliseconds patience)
      : context_(g_main_context_new()),
        end_(g_cancellable_new()),
        timer_(g_timeout_source_new(static_cast<guint>(patience.count()))) {
    g_main_context_push_thread_default(context_.get());
    g_source_set_callback(timer_.get(), giveUp, end_.get(), nullptr);
    g_source_attach(timer_.get(), context_.get());
  }
  TimedCalls(const TimedCalls&) = delete;
  TimedCalls& operator=(const TimedCalls&) = delete;
  ~TimedCalls() { g_main_context_pop_thread_default(context_.get()); }

  // What each call is to be given: its cancellable, its callback and, as the callback's data, this object.
  GCancellable* end() const { return end_.get(); }
  static void keepResult(GObject*, GAsyncResult* result, gpointer self) {
    static_cast<TimedCalls*>(self)->result_.reset(G_ASYNC_RESULT(g_object_ref(result)));
  }

  // Of the call just begun.
  Owned<GAsyncResult> result() {
    while (!result_)
      g_main_context_iteration(context_.get(), TRUE);
    return std::move(result_);
  }

 private:
  static gboolean giveUp(gpointer end) {
    g_cancellable_cancel(static_cast<GCancellable*>(end));
    return G_SOURCE_REMOVE;
  }

  const Owned<GMainContext> context_;
  const Owned<GCancellable> end_;
  const Owned<GSource> timer_;
  Owned<GAsyncResult> result_;
};

}  // namespace platform
