#include "app/gtk/MemoryWatch.h"

#include <gdk/gdk.h>
#include <unistd.h>

#include <fstream>
#include <utility>

namespace {

constexpr guint kIntervalMilliseconds = 50;
constexpr long kMaxGrowth = 64L << 20;  // bytes, without the pictures of the page
constexpr long kBytesPerPixel = 4;

// In pages; 0 if unknown.
long unsharedMemory() {
  std::ifstream file("/proc/self/statm");
  long size = 0, resident = 0, shared = 0;
  file >> size >> resident >> shared;
  return file ? resident - shared : 0;
}

// A window that fills the screen keeps two pictures of its page.
long pictures() {
  GdkWindow* const screen = gdk_get_default_root_window();
  const long scale = gdk_window_get_scale_factor(screen);
  return 2 * kBytesPerPixel * scale * scale * gdk_window_get_width(screen) * gdk_window_get_height(screen);
}

}  // namespace

// Has priority over the messages of the page, which may never end.
MemoryWatch::MemoryWatch(std::function<void()> onExceeded)
    : onExceeded_(std::move(onExceeded)),
      max_(unsharedMemory() + (kMaxGrowth + pictures()) / ::sysconf(_SC_PAGESIZE)),
      source_(g_timeout_add_full(G_PRIORITY_HIGH, kIntervalMilliseconds, onTime, this, nullptr)) {}

MemoryWatch::~MemoryWatch() {
  if (source_ != 0) g_source_remove(source_);
}

gboolean MemoryWatch::onTime(gpointer self) {
  auto* const watch = static_cast<MemoryWatch*>(self);
  if (unsharedMemory() <= watch->max_) return G_SOURCE_CONTINUE;
  watch->source_ = 0;
  watch->onExceeded_();
  return G_SOURCE_REMOVE;
}
