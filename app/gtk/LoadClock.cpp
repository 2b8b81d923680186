#include "app/gtk/LoadClock.h"

namespace {

constexpr guint kSecondsWithoutData = 60;

}  // namespace

void LoadClock::wind() {
  stop();
  source_ = g_timeout_add_seconds(kSecondsWithoutData, ring, this);
}

void LoadClock::stop() {
  if (source_ != 0) g_source_remove(source_);
  source_ = 0;
}

gboolean LoadClock::ring(gpointer self) {
  auto* const clock = static_cast<LoadClock*>(self);
  clock->source_ = 0;
  clock->onTimeOut_();
  return G_SOURCE_REMOVE;
}
