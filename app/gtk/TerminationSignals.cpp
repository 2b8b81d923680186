#include "app/gtk/TerminationSignals.h"

#include <glib-unix.h>

#include <csignal>
#include <utility>

TerminationSignals::TerminationSignals()
    : sources_{g_unix_signal_source_new(SIGTERM), g_unix_signal_source_new(SIGINT), g_unix_signal_source_new(SIGHUP)} {
  for (GSource* const source : sources_)
    g_source_set_callback(source, onSignal, this, nullptr);
}

void TerminationSignals::deliverTo(std::function<void()> handler) {
  handler_ = std::move(handler);
  for (GSource* const source : sources_)
    g_source_attach(source, nullptr);
}

gboolean TerminationSignals::onSignal(gpointer self) {
  static_cast<TerminationSignals*>(self)->handler_();
  return G_SOURCE_CONTINUE;
}
