#include "app/gtk/load/GlibIdleTimer.h"

namespace {

constexpr guint kTimeoutSeconds = 60;

}  // namespace

void GlibIdleTimer::start() {
  cancel();
  source_ = g_timeout_add_seconds(kTimeoutSeconds, expire, this);
}

void GlibIdleTimer::cancel() {
  if (source_ != 0) g_source_remove(source_);
  source_ = 0;
}

gboolean GlibIdleTimer::expire(gpointer self) {
  auto* const timer = static_cast<GlibIdleTimer*>(self);
  timer->source_ = 0;
  timer->onExpired_();
  return G_SOURCE_REMOVE;
}
