#include "app/gtk/StartUp.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <initializer_list>
#include <utility>

#include "platform/CloseOnExec.h"

void prepareDescriptors() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(standard, F_GETFD) == -1) (void)::open("/dev/null", O_RDWR);
  }
  platform::closeAllOnExec();
  (void)std::signal(SIGPIPE, SIG_IGN);
}

void prepareLocale() {
  gtk_disable_setlocale();
  (void)std::setlocale(LC_CTYPE, "");
  (void)std::setlocale(LC_MESSAGES, "");
}

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
