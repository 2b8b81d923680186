#include "app/gtk/load/NetworkProcessWatch.h"

#include <glib-unix.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "app/gtk/Descendants.h"
#include "app/gtk/PrivateFolder.h"

namespace {

constexpr guint kRetryMilliseconds = 20;
constexpr int kMaxTries = 3000;

}  // namespace

void NetworkProcessWatch::start() {
  tries_ = 0;
  if (source_ == 0) watch();
}

void NetworkProcessWatch::watch() {
  std::vector<Descendant> all = webKitProcesses();
  const auto found =
      std::find_if(all.begin(), all.end(), [](const Descendant& each) { return each.program == kNetworkProgram; });
  if (found == all.end()) {
    if (++tries_ < kMaxTries) source_ = g_timeout_add(kRetryMilliseconds, onRetry, this);
    return;
  }
  process_ = std::move(found->handle);
  setWriterOfPrivateFolder(process_.get());
  source_ = g_unix_fd_add(process_.get(), G_IO_IN, onReadable, this);
}

gboolean NetworkProcessWatch::onRetry(gpointer self) {
  auto* const watch = static_cast<NetworkProcessWatch*>(self);
  watch->source_ = 0;
  watch->watch();
  return G_SOURCE_REMOVE;
}

// A pidfd is readable once its process has ended.
gboolean NetworkProcessWatch::onReadable(int, GIOCondition, gpointer self) {
  auto* const watch = static_cast<NetworkProcessWatch*>(self);
  watch->source_ = 0;
  watch->cancel();
  watch->onEnded_();
  return G_SOURCE_REMOVE;
}

void NetworkProcessWatch::cancel() {
  if (source_ != 0) g_source_remove(source_);
  source_ = 0;
  process_.reset();
}
