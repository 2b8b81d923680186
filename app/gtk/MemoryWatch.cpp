#include "app/gtk/MemoryWatch.h"

#include <unistd.h>

#include <fstream>
#include <utility>

namespace {

constexpr guint kIntervalMilliseconds = 50;
constexpr long kMaxGrowth = 96L << 20;  // bytes

// In pages; 0 if unknown.
long unsharedMemory() {
  std::ifstream file("/proc/self/statm");
  long size = 0, resident = 0, shared = 0;
  file >> size >> resident >> shared;
  return file ? resident - shared : 0;
}

}  // namespace

// Has priority over the messages of the page, which may never end.
MemoryWatch::MemoryWatch(std::function<void()> onExceeded)
    : onExceeded_(std::move(onExceeded)),
      max_(unsharedMemory() + kMaxGrowth / ::sysconf(_SC_PAGESIZE)),
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
