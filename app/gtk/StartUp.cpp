#include "app/gtk/StartUp.h"

#include <fcntl.h>
#include <glib-unix.h>
#include <gtk/gtk.h>
#include <unistd.h>

#include <clocale>
#include <csignal>
#include <initializer_list>
#include <utility>

void prepareStandardStreams() {
  for (const int standard : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(standard, F_GETFD) == -1) (void)::open("/dev/null", O_RDWR);
  }
  (void)std::signal(SIGPIPE, SIG_IGN);
}

void configureLibraries() {
  // Otherwise written to disk: compiled shaders, the list of media plug-ins and, without a runtime folder, settings.
  g_setenv("MESA_SHADER_CACHE_DISABLE", "true", TRUE);
  g_setenv("__GL_SHADER_DISK_CACHE", "0", TRUE);
  g_setenv("GST_REGISTRY", "/proc/none/registry", TRUE);
  if (g_getenv("XDG_RUNTIME_DIR") == nullptr) g_setenv("GSETTINGS_BACKEND", "memory", TRUE);

  // The first two let everyone who can connect to a port inspect the pages; the third disables the sandbox.
  g_unsetenv("WEBKIT_INSPECTOR_SERVER");
  g_unsetenv("WEBKIT_INSPECTOR_HTTP_SERVER");
  g_unsetenv("WEBKIT_DISABLE_SANDBOX_THIS_IS_DANGEROUS");

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
